// The informators as a user meets them, on the desktop.

#include "com/forms/forms.h"
#include "com/forms/identifiers.h"
#include "tests/com/form_layout.h"
#include "tests/com/form_user.h"

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

// As a service's process has it.
TEST_F(Informators, AreNotShownWhereNobodySeesTheDesktop) {
    const HWINSTA seen = GetProcessWindowStation();
    const HWINSTA unseen = CreateWindowStationW(L"TavrixUnseen", 0, GENERIC_ALL, nullptr);
    ASSERT_TRUE(SetProcessWindowStation(unseen));
    EXPECT_EQ(answer({}), -1);
    SetProcessWindowStation(seen);
    CloseWindowStation(unseen);
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
    for (const auto& [what, shown] : cases) {
        SCOPED_TRACE(what);
        choose(shown, {expect_readable_layout, press(VK_ESCAPE)});
    }
    dialogs::OrderInformatorRecord order{.header = u"Zamówienie",
                                         .text = sentence + megabyte.substr(0, 3000),
                                         .buttons = all,
                                         .outcome_buttons = std::vector<Text>(5, long_caption),
                                         .outcome_count = 5,
                                         .value = u"12,50"};
    choose(order, {expect_readable_layout, press(VK_ESCAPE)});
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
