// The informators as a user meets them, on the desktop.

#include <algorithm>

#include "com/forms/forms.h"
#include "com/forms/identifiers.h"
#include "tests/com/form_layout.h"
#include "tests/com/form_user.h"
#include "windows/bstr.h"

namespace tavrix::test {
namespace {

using base::Text;
using dialogs::InformatorChoice;

constexpr int first_button = TAVRIX_INFORMATOR_BUTTON;

class Informators : public testing::Test {
  protected:
    FormUser user;
    const std::unique_ptr<dialogs::InformatorWindow> window = com::make_informator_window();
    dialogs::InformatorRecord record{
        u"Zapis dokumentu", u"Czy zapisać zmiany?", {u"&Tak", u"&Nie", u"", u"Później"}};
    dialogs::OrderInformatorRecord order{u"Zamówienie",
                                         u"Wybierz.",
                                         {u"&Realizuj", u"&Wróć"},
                                         {u"&Magazyn", u"S&klep"},
                                         2,
                                         u"12,50",
                                         1};

    template <typename Record>
    std::optional<InformatorChoice> choose(const Record& shown, std::vector<Step> steps) {
        std::optional<InformatorChoice> choice;
        const dialogs::InformatorForm form = informator_form(shown);
        user.use([&] { choice = window->show(form); }, std::move(steps));
        return choice;
    }
    std::int32_t answer(std::vector<Step> steps) {
        const auto choice = choose(record, std::move(steps));
        return choice ? choice->button : dialogs::no_button;
    }
};

Text clipboard_text() {
    if (!OpenClipboard(nullptr)) return u"(closed)";
    const HANDLE memory = GetClipboardData(CF_UNICODETEXT);
    const Text text = memory == nullptr
                          ? Text()
                          : windows::text_from_wide(static_cast<wchar_t*>(GlobalLock(memory)));
    if (memory != nullptr) GlobalUnlock(memory);
    CloseClipboard();
    return text;
}

// Keys that are held are the keyboard's state, which the message alone does not change.
Step press_with_control(WPARAM key) {
    return [key](HWND form) {
        BYTE keys[256]{};
        GetKeyboardState(keys);
        keys[VK_CONTROL] = 0x80;
        SetKeyboardState(keys);
        press(key)(form);
    };
}

Step release_control() {
    return [](HWND) {
        BYTE keys[256]{};
        SetKeyboardState(keys);
    };
}

TEST_F(Informators, GiveTheNumberOfTheButtonOrThatThereWasNone) {
    struct Way {
        const char* how;
        Step step;
        std::int32_t number;
    };
    const Way ways[] = {{"Enter", press(VK_RETURN), 0},
                        {"a click", click(first_button + 3), 3},
                        {"a key", press_with_alt(L'n'), 1},
                        {"Esc", press(VK_ESCAPE), -1},
                        {"the cross", click_cross(), -1}};
    for (const Way& way : ways) {
        SCOPED_TRACE(way.how);
        EXPECT_EQ(answer({way.step}), way.number);
    }
    EXPECT_EQ(answer({press(VK_TAB), press(VK_RETURN)}), 1);
    EXPECT_EQ(answer({[](HWND) { PostQuitMessage(0); }}), -1);
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    record.buttons.assign(13, u" ");
    EXPECT_EQ(answer({press(VK_RETURN)}), -1) << "the button that closes is the host's none";
    EXPECT_EQ(answer({[&](HWND) { DestroyWindow(user.host_window()); }}), -1);
}

TEST_F(Informators, AskedAgainWhileOpenGiveNothingAndComeToTheFront) {
    const dialogs::InformatorForm second = informator_form(record);
    EXPECT_EQ(answer({[&](HWND form) {
                          EXPECT_EQ(window->show(second).has_value(), false);
                          EXPECT_EQ(open_forms(), std::vector<HWND>{form});
                          EXPECT_EQ(GetActiveWindow(), form);
                      },
                      click(first_button + 1)}),
              1);
}

// As a service's process has it.
TEST_F(Informators, AreNotShownWhereNobodySeesTheDesktop) {
    const HWINSTA seen = GetProcessWindowStation();
    const HWINSTA unseen = CreateWindowStationW(L"TavrixUnseen", 0, GENERIC_ALL, nullptr);
    ASSERT_TRUE(SetProcessWindowStation(unseen));
    EXPECT_EQ(answer({}), -1);
    SetProcessWindowStation(seen);
    CloseWindowStation(unseen);
}

TEST_F(Informators, ForOrdersGiveTheChangedValueAndTheOutcome) {
    const auto untouched = choose(order, {click(first_button + 1)});
    ASSERT_TRUE(untouched);
    EXPECT_EQ(std::tie(untouched->button, untouched->outcome), std::tuple(1, 1));
    EXPECT_EQ(untouched->value, std::nullopt);

    const auto type = [](HWND form) {
        const HWND box = GetDlgItem(form, TAVRIX_INFORMATOR_VALUE);
        EXPECT_EQ(text_of(box), u"12,50");
        SetFocus(box);
        SendMessageW(box, EM_SETSEL, 0, -1);
        SendMessageW(box, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L"99"));
        SendMessageW(box, EM_SETMODIFY, TRUE, 0);
    };
    const auto changed = choose(order, {type, press_with_alt(L'm'), press_with_alt(L'w')});
    ASSERT_TRUE(changed);
    EXPECT_EQ(std::tie(changed->button, changed->outcome), std::tuple(2, 0));
    EXPECT_EQ(changed->value, u"99");
    EXPECT_FALSE(choose(order, {type, press(VK_ESCAPE)}));
    order.outcome = 7;
    EXPECT_EQ(choose(order, {press(VK_RETURN)})->outcome, std::nullopt);
}

TEST_F(Informators, AreReadableWhateverTheHostGives) {
    const Text sentence =
        u"Zażółć gęślą jaźń & inne słowa, które razem nie mieszczą się w jednym wierszu okna. ";
    Text megabyte;
    while (megabyte.size() < 1'048'576) megabyte += sentence + u'\n';
    const Text long_caption = (sentence + sentence + sentence).substr(0, 200);
    std::vector<Text> all(13, long_caption);
    all[5] = Text(200, u'W');
    const struct {
        const char* what;
        dialogs::InformatorRecord record;
    } cases[] = {
        {"usual", record},
        {"nothing", {}},
        {"a header that no title bar holds", {sentence + sentence, u"a", {u"OK"}}},
        {"a word that no line holds", {u"", Text(500, u'x'), {u"OK"}}},
        {"more than the screen", {u"", megabyte, all}},
    };
    const auto on_the_screen = [](HWND form) {
        RECT place{};
        RECT room{};
        RECT common{};
        GetWindowRect(form, &place);
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &room, 0);
        EXPECT_TRUE(IntersectRect(&common, &place, &room) && EqualRect(&common, &place));
    };
    for (const auto& [what, shown] : cases) {
        SCOPED_TRACE(what);
        choose(shown, {expect_readable_layout, on_the_screen, press(VK_ESCAPE)});
    }
    order.outcome_buttons = std::vector<Text>(5, long_caption);
    order.outcome_count = 5;
    order.text = sentence + megabyte.substr(0, 3000);
    choose(order, {expect_readable_layout, on_the_screen, press(VK_ESCAPE)});
}

TEST_F(Informators, CopyThemselvesUnlessSomethingIsSelected) {
    const auto select = [](HWND form) {
        const HWND box = GetDlgItem(form, TAVRIX_INFORMATOR_VALUE);
        SetFocus(box);
        SendMessageW(box, EM_SETSEL, 0, 2);
    };
    choose(order, {press_with_control('C'), release_control(), press(VK_ESCAPE)});
    EXPECT_EQ(clipboard_text(), copied_text(informator_form(order)));
    choose(order, {select, press_with_control('C'), release_control(), press(VK_ESCAPE)});
    EXPECT_EQ(clipboard_text().find(u"Zamówienie"), Text::npos);
}

TEST(PrinterForm, GivesTheChosenNameOrNone) {
    FormUser user;
    const std::unique_ptr<dialogs::PrinterWindow> window = com::make_printer_window();
    const Text shared = u"\\\\biuro\\" + Text(200, u'K');
    const auto form = dialogs::printer_choice_form({{u"Alfa", shared}, u"Alfa"});
    const auto choose = [&](const dialogs::PrinterChoiceForm& shown, std::vector<Step> steps) {
        std::optional<Text> choice;
        user.use([&] { choice = window->show(shown); }, std::move(steps));
        return choice;
    };
    EXPECT_EQ(choose(form, {expect_readable_layout, press(VK_RETURN)}), u"Alfa");
    const auto double_click = [](HWND list_form) {
        PostMessageW(list_form, WM_COMMAND, MAKEWPARAM(TAVRIX_PRINTER_LIST, LBN_DBLCLK), 0);
    };
    EXPECT_EQ(choose(form, {press(VK_DOWN), double_click}), shared);
    EXPECT_EQ(choose(form, {press(VK_ESCAPE)}), std::nullopt);
    EXPECT_EQ(choose(dialogs::printer_choice_form({}), {expect_readable_layout, press(VK_RETURN)}),
              std::nullopt);
}

}  // namespace
}  // namespace tavrix::test
