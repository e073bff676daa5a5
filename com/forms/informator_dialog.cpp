#include "com/forms/informator_dialog.h"

#include <algorithm>
#include <array>

#include "com/forms/clipboard.h"
#include "com/forms/form_text.h"
#include "com/forms/forms.h"
#include "com/forms/identifiers.h"
#include "com/module.h"
#include "windows/bstr.h"

namespace tavrix::com {
namespace {

using dialogs::ButtonRows;
using dialogs::InformatorButton;
using dialogs::PixelPlace;
using dialogs::PixelSize;

// In the units of templates.
constexpr int narrowest_inside = 180;
constexpr int widest_inside = 320;
constexpr int tallest_text = 160;
constexpr int smallest_button_width = 50;
constexpr int smallest_button_height = 14;
constexpr int widest_caption = 148;
constexpr int label_width = 40;
constexpr int box_height = 12;

// A text that long scrolls; measuring it would take longer than showing it.
constexpr std::size_t most_characters_measured = 4'000;
constexpr std::size_t most_characters_of_an_outcome = 100;
// The most that a button shows, while there is room and while there is less and less of it.
constexpr std::array<std::size_t, 5> caption_cuts = {200, 120, 60, 30, 12};
// Where the host names no button at all.
constexpr const char16_t* only_caption = u"Zamknij";
constexpr UINT wrapped = DT_WORDBREAK | DT_EDITCONTROL | DT_EXPANDTABS | DT_NOPREFIX;

FormPlace informator_place;
FormPlace order_informator_place;

class InformatorOnDesktop final : public dialogs::InformatorWindow {
  public:
    std::optional<dialogs::InformatorChoice> show(
        const dialogs::InformatorForm& form) noexcept override {
        InformatorDialog dialog(form);
        dialog.show_in(form.order ? order_informator_place : informator_place);
        return dialog.choice();
    }
};

bool has_selection(HWND control) noexcept {
    DWORD first = 0;
    DWORD end = 0;
    SendMessageW(control, EM_GETSEL, reinterpret_cast<WPARAM>(&first),
                 reinterpret_cast<LPARAM>(&end));
    return first != end;
}

}  // namespace

/// Controls below each other, counted from the column's own top.
struct InformatorDialog::Column {
    struct Placed {
        HWND control;
        PixelPlace place;
    };

    void add(HWND control, int left, PixelSize size, int gap) {
        add_beside(control, {left, next_top(gap), size});
    }
    void add_beside(HWND control, PixelPlace place) {
        controls.push_back({control, place});
        height = std::max(height, place.top + place.size.height);
    }
    int next_top(int gap) const noexcept { return controls.empty() ? 0 : height + gap; }
    void show(int left, int top) const noexcept {
        for (const auto& [control, place] : controls) {
            MoveWindow(control, left + place.left, top + place.top, place.size.width,
                       place.size.height, FALSE);
        }
    }

    std::vector<Placed> controls;
    int height = 0;
};

std::unique_ptr<dialogs::InformatorWindow> make_informator_window() {
    return std::make_unique<InformatorOnDesktop>();
}

InformatorDialog::InformatorDialog(const dialogs::InformatorForm& form) noexcept
    : Dialog(TAVRIX_INFORMATOR_FORM), form_(form) {}

void InformatorDialog::on_open() {
    SetWindowTextW(window(), windows::wide(form_.title));
    if (form_.order) {
        // Typing is limited otherwise.
        SendMessageW(control(TAVRIX_INFORMATOR_VALUE), EM_SETLIMITTEXT, 0, 0);
        set_text(TAVRIX_INFORMATOR_VALUE, form_.order->value);
        make_outcomes();
    } else {
        take_away(TAVRIX_INFORMATOR_VALUE_LABEL);
        take_away(TAVRIX_INFORMATOR_VALUE);
    }
    if (outcomes_.empty()) take_away(TAVRIX_INFORMATOR_OUTCOMES_LABEL);
    make_buttons();
    lay_out();
    SetFocus(buttons_.front());
}

HWND InformatorDialog::make_button(const base::Text& caption, int id, DWORD style) {
    const HWND button = CreateWindowExW(
        0, L"Button", windows::wide(caption), WS_CHILD | WS_VISIBLE | BS_MULTILINE | style, 0, 0, 0,
        0, window(), reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), module_handle(), nullptr);
    SendMessageW(button, WM_SETFONT, SendMessageW(window(), WM_GETFONT, 0, 0), FALSE);
    return button;
}

void InformatorDialog::make_outcomes() {
    DWORD style = BS_AUTORADIOBUTTON | WS_TABSTOP | WS_GROUP;
    for (const InformatorButton& outcome : form_.order->outcomes) {
        const HWND made =
            make_button(dialogs::cut_caption(outcome.caption, most_characters_of_an_outcome),
                        TAVRIX_INFORMATOR_OUTCOME + outcome.number, style);
        if (outcome.number == form_.order->outcome) SendMessageW(made, BM_SETCHECK, BST_CHECKED, 0);
        outcomes_.push_back(made);
        style = BS_AUTORADIOBUTTON;
    }
}

void InformatorDialog::make_buttons() {
    constexpr DWORD style = WS_TABSTOP | WS_GROUP;
    for (const InformatorButton& button : form_.buttons) {
        buttons_.push_back(make_button(button.caption, TAVRIX_INFORMATOR_BUTTON + button.number,
                                       style | (buttons_.empty() ? BS_DEFPUSHBUTTON : 0)));
    }
    if (buttons_.empty()) {
        buttons_.push_back(make_button(only_caption, IDCANCEL, style | BS_DEFPUSHBUTTON));
    }
    SendMessageW(window(), DM_SETDEFID, static_cast<WPARAM>(GetDlgCtrlID(buttons_.front())), 0);
}

void InformatorDialog::lay_out() {
    const SIZE margin = pixels(7, 7);
    const int gap = static_cast<int>(margin.cy);
    RECT outside{};
    RECT inside{};
    GetWindowRect(window(), &outside);
    GetClientRect(window(), &inside);
    const SIZE frame = {outside.right - outside.left - inside.right + 2 * margin.cx,
                        outside.bottom - outside.top - inside.bottom + 2 * margin.cy};
    const RECT screen = work_area();
    const int most_width = static_cast<int>(screen.right - screen.left - frame.cx);
    const int most_height = static_cast<int>(screen.bottom - screen.top - frame.cy);

    const int width =
        chosen_width(std::min(most_width, static_cast<int>(pixels(widest_inside, 0).cx)));
    Column upper;
    Column lower;
    add_heading(upper, width);
    add_order(lower, width);
    add_buttons(lower, width, most_height / 2);
    const int most_text = most_height - lower.height - upper.next_top(gap) - gap;
    add_text(upper, width, std::min(most_text, static_cast<int>(pixels(0, tallest_text).cy)));

    const int lower_top = static_cast<int>(margin.cy) + upper.next_top(gap);
    upper.show(static_cast<int>(margin.cx), static_cast<int>(margin.cy));
    // A box breaks a text into lines anew with each size that it gets.
    if (control(TAVRIX_INFORMATOR_LONG_TEXT) != nullptr) {
        set_text(TAVRIX_INFORMATOR_LONG_TEXT, form_.text);
    }
    lower.show(static_cast<int>(margin.cx), lower_top);
    resize({width + frame.cx, lower_top - margin.cy + lower.height + frame.cy});
}

int InformatorDialog::text_width(HWND measured_by, const base::Text& text) const {
    return static_cast<int>(size_of_text(measured_by, text, 0, DT_EXPANDTABS | DT_NOPREFIX).cx);
}

// What needs no line to be broken and no second row, within the limits.
int InformatorDialog::chosen_width(int widest_px) {
    const HWND label = control(TAVRIX_INFORMATOR_TEXT);
    int buttons_px = 0;
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        const PixelSize size =
            fit_caption(i, caption_cuts.front(), static_cast<int>(pixels(widest_caption, 0).cx));
        buttons_px += size.width + static_cast<int>(pixels(4, 0).cx);
    }
    const int text_px =
        form_.text.size() > most_characters_measured ? widest_px : text_width(label, form_.text);
    // Beside the title stand the window's signs.
    const int title_px = text_width(label, form_.title) + static_cast<int>(pixels(60, 0).cx);
    const int narrowest_px = std::min(static_cast<int>(pixels(narrowest_inside, 0).cx), widest_px);
    return std::clamp(std::max({buttons_px, text_px, title_px}), narrowest_px, widest_px);
}

// Only for a header that the title bar has no room for.
void InformatorDialog::add_heading(Column& column, int width_px) {
    const HWND heading = control(TAVRIX_INFORMATOR_HEADING);
    if (text_width(heading, form_.title) < width_px) {
        take_away(TAVRIX_INFORMATOR_HEADING);
        return;
    }
    set_text(TAVRIX_INFORMATOR_HEADING, form_.title);
    const SIZE needed = size_of_text(heading, form_.title, width_px, wrapped);
    column.add(heading, 0, {width_px, static_cast<int>(needed.cy)}, 0);
}

// A label where the text fits, because screen readers say it when the form opens; else a box that
// scrolls.
void InformatorDialog::add_text(Column& column, int width_px, int most_height_px) {
    const int gap = static_cast<int>(pixels(0, 7).cy);
    const int line_px = static_cast<int>(pixels(0, 8).cy);
    const HWND label = control(TAVRIX_INFORMATOR_TEXT);
    const bool measured = form_.text.size() <= most_characters_measured;
    const int needed_px =
        measured ? static_cast<int>(size_of_text(label, form_.text, width_px, wrapped).cy) : 0;
    if (measured && needed_px <= most_height_px) {
        take_away(TAVRIX_INFORMATOR_LONG_TEXT);
        set_text(TAVRIX_INFORMATOR_TEXT, form_.text);
        column.add(label, 0, {width_px, std::max(needed_px, line_px)}, gap);
        return;
    }
    take_away(TAVRIX_INFORMATOR_TEXT);
    column.add(control(TAVRIX_INFORMATOR_LONG_TEXT), 0,
               {width_px, std::max(most_height_px, 3 * line_px)}, gap);
}

void InformatorDialog::add_order(Column& column, int width_px) {
    if (!form_.order) return;
    const int gap = static_cast<int>(pixels(0, 4).cy);
    const int line_px = static_cast<int>(pixels(0, 8).cy);
    const SIZE box = pixels(label_width, box_height);
    const int left = static_cast<int>(box.cx);
    const int box_px = static_cast<int>(box.cy);
    const int label_drop_px = (box_px - line_px) / 2;
    column.add_beside(control(TAVRIX_INFORMATOR_VALUE_LABEL), {0, label_drop_px, {left, line_px}});
    column.add_beside(control(TAVRIX_INFORMATOR_VALUE), {left, 0, {width_px - left, box_px}});
    if (outcomes_.empty()) return;

    const int sign_px = static_cast<int>(pixels(14, 0).cx);
    const int drop_px = static_cast<int>(pixels(0, 1).cy);
    int top = column.next_top(gap);
    column.add_beside(control(TAVRIX_INFORMATOR_OUTCOMES_LABEL),
                      {0, top + drop_px, {left, line_px}});
    for (const HWND outcome : outcomes_) {
        const SIZE needed = size_of_text(outcome, text_of_control(outcome),
                                         width_px - left - sign_px, DT_WORDBREAK | DT_EDITCONTROL);
        const int height_px = static_cast<int>(needed.cy) + 2 * drop_px;
        column.add_beside(outcome, {left, top, {width_px - left, height_px}});
        top += height_px + drop_px;
    }
}

// Captions are cut the more, the less room the rows have.
void InformatorDialog::add_buttons(Column& column, int width_px, int most_height_px) {
    const SIZE gap = pixels(4, 7);
    const int widest_px = std::min(width_px, static_cast<int>(pixels(widest_caption, 0).cx));
    for (const std::size_t characters : caption_cuts) {
        std::vector<PixelSize> needed;
        for (std::size_t i = 0; i < buttons_.size(); ++i) {
            needed.push_back(fit_caption(i, characters, widest_px));
        }
        const ButtonRows rows(needed, width_px, static_cast<int>(gap.cx));
        if (rows.height > most_height_px && characters != caption_cuts.back()) continue;
        const int top = column.next_top(static_cast<int>(gap.cy));
        for (std::size_t i = 0; i < buttons_.size(); ++i) {
            PixelPlace place = rows.places[i];
            place.top += top;
            column.add_beside(buttons_[i], place);
        }
        return;
    }
}

// Leaves the caption on the button, cut further where a word is wider than the button can be.
PixelSize InformatorDialog::fit_caption(std::size_t index, std::size_t characters, int widest_px) {
    const HWND button = buttons_[index];
    const base::Text caption = form_.buttons.empty() ? only_caption : form_.buttons[index].caption;
    const SIZE padding = pixels(6, 3);
    const SIZE smallest = pixels(smallest_button_width, smallest_button_height);
    const int line_px = widest_px - 2 * static_cast<int>(padding.cx);
    for (;; characters = characters * 3 / 4) {
        const base::Text shown = dialogs::cut_caption(caption, characters);
        const SIZE text = size_of_text(button, shown, line_px, DT_WORDBREAK);
        if (text.cx + 2 * padding.cx > widest_px && characters > 4) continue;
        SetWindowTextW(button, windows::wide(shown));
        return {static_cast<int>(std::max(text.cx + 2 * padding.cx, smallest.cx)),
                static_cast<int>(std::max(text.cy + 2 * padding.cy, smallest.cy))};
    }
}

void InformatorDialog::on_command(int id, int notification) {
    if (notification != BN_CLICKED) return;
    if (id == IDCANCEL) return close();
    const auto chosen =
        std::ranges::find(form_.buttons, id - TAVRIX_INFORMATOR_BUTTON, &InformatorButton::number);
    if (chosen == form_.buttons.end()) return;
    dialogs::InformatorChoice choice;
    choice.button = chosen->number;
    const HWND value = control(TAVRIX_INFORMATOR_VALUE);
    if (value != nullptr && SendMessageW(value, EM_GETMODIFY, 0, 0) != 0) {
        choice.value = text_of_control(value);
    }
    for (const HWND outcome : outcomes_) {
        if (SendMessageW(outcome, BM_GETCHECK, 0, 0) == BST_CHECKED) {
            choice.outcome = GetDlgCtrlID(outcome) - TAVRIX_INFORMATOR_OUTCOME;
        }
    }
    choice_ = std::move(choice);
    close();
}

bool InformatorDialog::on_key(UINT key) {
    if (key != 'C' || !only_control_is_down()) return false;
    // What is selected in a box goes first.
    const HWND focus = GetFocus();
    const int id = GetDlgCtrlID(focus);
    const bool in_a_box = id == TAVRIX_INFORMATOR_VALUE || id == TAVRIX_INFORMATOR_LONG_TEXT;
    if (in_a_box && has_selection(focus)) return false;
    copy_to_clipboard(window(), dialogs::copied_text(form_));
    return true;
}

}  // namespace tavrix::com
