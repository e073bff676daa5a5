#include "dialogs/informator.h"

#include <algorithm>

#include "dialogs/shown_text.h"

namespace tavrix::dialogs {
namespace {

using base::Text;
using base::TextView;

// Wrapping a megabyte takes an edit control seconds.
constexpr std::size_t most_characters_shown = 64'000;
constexpr std::size_t most_characters_of_a_title = 300;
constexpr std::int32_t most_outcomes = 5;
constexpr TextView dashes = u"---------------------------\r\n";

/// The letters after ampersands, each given away once.
class Mnemonics {
  public:
    /// The caption without an ampersand whose letter an earlier one has: the dialog manager would
    /// then only go from one to the other and press none.
    Text without_taken(TextView caption) {
        Text kept;
        for (std::size_t i = 0; i < caption.size(); ++i) {
            if (caption[i] != u'&') {
                kept += caption[i];
            } else if (i + 1 < caption.size() && caption[i + 1] == u'&') {
                kept += u"&&";
                ++i;
            } else if (i + 1 < caption.size() && take(caption[i + 1])) {
                kept += u'&';
            }
        }
        return kept;
    }

  private:
    bool take(char16_t letter) {
        const char16_t upper = base::upper(letter);
        if (upper == u' ' || taken_.find(upper) != Text::npos) return false;
        taken_ += upper;
        return true;
    }

    Text taken_;
};

Text in_one_line(TextView text) {
    Text line(base::trim(text));
    std::ranges::replace_if(
        line, [](char16_t c) { return c < u' '; }, u' ');
    return line;
}

// Controls take a text to its first NUL.
Text without_nul(Text text) {
    std::ranges::replace(text, u'\0', u' ');
    return text;
}

std::vector<InformatorButton> shown_buttons(const std::vector<Text>& captions, std::int32_t number,
                                            Mnemonics& mnemonics) {
    std::vector<InformatorButton> buttons;
    for (const Text& caption : captions) {
        const Text line = in_one_line(caption);
        if (!line.empty()) buttons.push_back({number, mnemonics.without_taken(line)});
        ++number;
    }
    return buttons;
}

// 64000 as "64 000".
Text in_thousands(std::size_t number) {
    Text digits = base::to_decimal(static_cast<std::int64_t>(number));
    for (std::size_t i = digits.size(); i > 3; i -= 3) digits.insert(i - 3, 1, u'\u00A0');
    return digits;
}

// Neither half a character nor half a line end.
std::size_t cut_before(TextView text, std::size_t end) {
    const char16_t last = text[end - 1];
    return (last >= 0xD800 && last < 0xDC00) || last == u'\r' ? end - 1 : end;
}

Text cut_text(const Text& text) {
    if (text.size() <= most_characters_shown) return text;
    return text.substr(0, cut_before(text, most_characters_shown)) +
           u"…\r\n\r\n[Tekst skrócony: pokazano " + in_thousands(most_characters_shown) + u" z " +
           in_thousands(text.size()) + u" znaków. Ctrl+C kopiuje całość.]";
}

template <typename Record>
InformatorForm form_without_buttons(const Record& record) {
    InformatorForm form;
    form.title = cut_caption(in_one_line(record.header), most_characters_of_a_title);
    form.whole_text = with_edit_line_ends(without_nul(record.text));
    form.text = cut_text(form.whole_text);
    return form;
}

// As it reads on the button.
Text without_ampersands(TextView caption) {
    Text shown;
    for (std::size_t i = 0; i < caption.size(); ++i) {
        if (caption[i] == u'&' && ++i == caption.size()) break;
        shown += caption[i];
    }
    return shown;
}

}  // namespace

InformatorForm informator_form(const InformatorRecord& record) {
    InformatorForm form = form_without_buttons(record);
    Mnemonics mnemonics;
    form.buttons = shown_buttons(record.buttons, 0, mnemonics);
    return form;
}

InformatorForm informator_form(const OrderInformatorRecord& record) {
    InformatorForm form = form_without_buttons(record);
    Mnemonics mnemonics;
    form.buttons = shown_buttons(record.buttons, 1, mnemonics);

    std::vector<Text> captions = record.outcome_buttons;
    const std::int32_t count = std::clamp(record.outcome_count, 0, most_outcomes);
    captions.resize(std::min(captions.size(), static_cast<std::size_t>(count)));
    InformatorForm::Order order{
        without_nul(record.value), shown_buttons(captions, 0, mnemonics), {}};
    if (std::ranges::find(order.outcomes, record.outcome, &InformatorButton::number) !=
        order.outcomes.end()) {
        order.outcome = record.outcome;
    }
    form.order = std::move(order);
    return form;
}

Text copied_text(const InformatorForm& form) {
    Text copied = Text(dashes) + form.title + u"\r\n" + Text(dashes);
    copied += form.whole_text + u"\r\n" + Text(dashes);
    if (form.order) {
        copied += form.order->value + u"\r\n";
        for (const InformatorButton& outcome : form.order->outcomes) {
            copied += without_ampersands(outcome.caption) + u"   ";
        }
        copied += u"\r\n" + Text(dashes);
    }
    for (const InformatorButton& button : form.buttons) {
        copied += without_ampersands(button.caption) + u"   ";
    }
    return copied + u"\r\n" + Text(dashes);
}

Text cut_caption(TextView caption, std::size_t characters) {
    if (caption.size() <= characters) return Text(caption);
    std::size_t end = cut_before(caption, characters - 1);
    // An ampersand at the end would make the ellipsis a key; the second of a pair stands for one.
    const std::size_t ampersands = end - (caption.substr(0, end).find_last_not_of(u'&') + 1);
    if (ampersands % 2 != 0) --end;
    return Text(base::trim(caption.substr(0, end))) + u'…';
}

}  // namespace tavrix::dialogs
