// The library's own windows, as a user meets them: what they show, the keyboard, how they close,
// and what they do to the host's window.

#include "com/forms/forms.h"

#include <process.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "com/forms/identifiers.h"
#include "tests/com/form_content.h"
#include "tests/com/form_layout.h"
#include "tests/com/form_user.h"
#include "tests/com/gdi_objects.h"
#include "tests/com/late_host.h"
#include "windows/gdi.h"
// Needs what they include.
#include <commctrl.h>

namespace tavrix::test {
namespace {

class Forms : public testing::Test {
  protected:
    FormUser user;
    const std::unique_ptr<frame::AboutWindow> about_window = com::make_about_window();
    const std::unique_ptr<mail::MessageWindow> message_window = com::make_message_window();
    const std::unique_ptr<mail::RetrievalWindow> retrieval_window = com::make_retrieval_window();
    FormContent content;
    const std::function<void()> about = [this] { about_window->show(content.about); };
    const std::function<void()> message_form = [this] { message_window->show(content.message); };

    // The control that has the focus first, and every other one that Tab leads to.
    std::vector<int> tab_order(const std::function<void()>& show) {
        constexpr std::size_t more_than_there_are = 20;
        std::vector<int> order;
        std::vector<Step> steps(more_than_there_are, [&order](HWND form) {
            order.push_back(GetDlgCtrlID(GetFocus()));
            press(VK_TAB)(form);
        });
        steps.push_back(press(VK_ESCAPE));
        user.use(show, std::move(steps));
        order.erase(std::find(order.begin() + 1, order.end(), order.front()), order.end());
        return order;
    }
};

TEST_F(Forms, AboutBoxTellsWhatItIsAndReachesTheSystemInformation) {
    int calls = 0;
    content.about.show_system_information = [&] { ++calls; };
    const auto look = [&](HWND form) {
        EXPECT_EQ(text_of(form), u"O programie Tavrix");
        expect_texts(form, {{TAVRIX_ABOUT_TITLE, u"Tavrix"},
                            {TAVRIX_ABOUT_VERSION, u"Wersja 10.0.36"},
                            {TAVRIX_ABOUT_DESCRIPTION, content.about.description}});
    };
    user.use(about, {look, click(TAVRIX_ABOUT_SYSTEM_INFORMATION), press_with_alt(L'i'),
                     press(VK_ESCAPE)});
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(tab_order(about), (std::vector<int>{IDOK, TAVRIX_ABOUT_SYSTEM_INFORMATION}));
}

TEST_F(Forms, MessageFormShowsTheWholeMessageAndLeavesItsResultAlone) {
    content.record.result = 7;
    content.record.body[1] = u"jedna\ndruga\r\ntrzecia\rczwarta & piąta";
    content.record.attachments = u"C:\\a & b.pdf;;D:\\zażółć.xml";
    const auto look = [&](HWND form) {
        expect_texts(form,
                     {{TAVRIX_MESSAGE_RECIPIENTS, content.record.recipients},
                      {TAVRIX_MESSAGE_TAX_NUMBER, u"525-000-12-34"},
                      {TAVRIX_MESSAGE_DATE, content.message.date},
                      {TAVRIX_MESSAGE_SUBJECT, content.record.subject},
                      {TAVRIX_MESSAGE_BODY, content.record.body[0]},
                      {TAVRIX_MESSAGE_BODY + 1, u"jedna\r\ndruga\r\ntrzecia\r\nczwarta & piąta"},
                      {TAVRIX_MESSAGE_BODY + 2, content.record.body[2]},
                      {TAVRIX_MESSAGE_ATTACHMENTS, u"C:\\a & b.pdf\r\nD:\\zażółć.xml"},
                      {TAVRIX_MESSAGE_STATUS, u""}});
        std::vector<base::Text> labels;
        for (const HWND control : controls_of(form)) labels.push_back(text_of(control));
        for (const char16_t* label : {u"Wysyłam do konta:", u"NIP:", u"Dnia:"}) {
            EXPECT_EQ(std::count(labels.begin(), labels.end(), label), 1) << base::to_utf8(label);
        }
    };
    // A user who types changes nothing: what is shown is what goes.
    const auto type = [](HWND form) {
        SetFocus(GetDlgItem(form, TAVRIX_MESSAGE_BODY));
        PostMessageW(GetFocus(), WM_CHAR, L'x', 1);
    };
    user.use(message_form, {look, type, look, press_with_alt(L'z')});
    EXPECT_EQ(content.record.result, 7);

    EXPECT_EQ(tab_order(message_form),
              (std::vector<int>{
                  IDOK, IDCANCEL, TAVRIX_MESSAGE_RECIPIENTS, TAVRIX_MESSAGE_TAX_NUMBER,
                  TAVRIX_MESSAGE_DATE, TAVRIX_MESSAGE_SUBJECT, TAVRIX_MESSAGE_BODY,
                  TAVRIX_MESSAGE_BODY + 1, TAVRIX_MESSAGE_BODY + 2, TAVRIX_MESSAGE_ATTACHMENTS}));
}

TEST_F(Forms, MessageFormSendsAndTellsHowItGoes) {
    HWND shown = nullptr;
    std::vector<base::Text> told;
    base::Text outcome = u"Serwer odrzucił adresata x@y.pl: 550 no such user here";
    content.message.send = [&](mail::smtp::SendingListener& listener) {
        listener.on_stage(mail::smtp::Stage::sending);
        EXPECT_FALSE(IsWindowEnabled(GetDlgItem(shown, IDOK)));
        told.push_back(text_of(GetDlgItem(shown, TAVRIX_MESSAGE_STATUS)));
        told.push_back(listener.goes_on(0, 0) ? u"on" : u"stopped");
        return outcome;
    };
    const auto failed = [&](HWND form) {
        expect_texts(form, {{TAVRIX_MESSAGE_STATUS, outcome}});
        EXPECT_TRUE(IsWindowEnabled(GetDlgItem(form, IDOK))) << "once more is possible";
        expect_readable_layout(form);
        outcome.clear();
    };
    user.use(message_form, {[&](HWND form) { shown = form; }, click(IDOK), failed, click(IDOK)});
    outcome = u"Przerwano.";
    // The cross is pressed while the message is on its way.
    user.use(message_form, {[&](HWND form) {
                 shown = form;
                 PostMessageW(form, WM_COMMAND, IDOK, 0);
                 PostMessageW(form, WM_CLOSE, 0, 0);
             }});
    EXPECT_EQ(told, (std::vector<base::Text>{u"Wysyłam", u"on", u"Wysyłam", u"on", u"Wysyłam",
                                             u"stopped"}));
}

TEST_F(Forms, CloseInEveryWayAndGiveTheHostItsWindowBack) {
    // A box of several lines handles its keys itself.
    const auto in_text = [](WPARAM key) {
        return [key](HWND form) {
            SetFocus(GetDlgItem(form, TAVRIX_MESSAGE_BODY));
            press(key)(form);
        };
    };
    const auto look = [&](HWND form) {
        EXPECT_FALSE(IsWindowEnabled(user.host_window()));
        EXPECT_EQ(GetActiveWindow(), form);
    };
    const std::pair<std::function<void()>, Step> ways[] = {{about, press(VK_RETURN)},
                                                           {about, click_cross()},
                                                           {about, click(IDOK)},
                                                           {message_form, in_text(VK_RETURN)},
                                                           {message_form, in_text(VK_ESCAPE)},
                                                           {message_form, click_cross()},
                                                           {message_form, click(IDCANCEL)}};
    for (const auto& [show, close] : ways) {
        SCOPED_TRACE(testing::Message() << "way " << &close - &ways[0].second);
        user.use(show, {look, close});
        EXPECT_TRUE(IsWindowEnabled(user.host_window()));
        EXPECT_EQ(GetActiveWindow(), user.host_window());
    }
}

TEST_F(Forms, BelongToTheHostAndLeaveItsWindowsAsTheyWere) {
    const auto owned = [&](HWND form) { EXPECT_EQ(GetWindow(form, GW_OWNER), user.host_window()); };
    const auto show_before = [&](HWND active) {
        return [this, active] {
            SetActiveWindow(active);
            about_window->show(content.about);
        };
    };
    // Also when another program is in front.
    user.use(show_before(nullptr), {owned, press(VK_ESCAPE)});
    EXPECT_TRUE(IsWindowEnabled(user.host_window()));

    const HWND second =
        CreateWindowExW(0, L"Static", L"Kartoteka", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 200,
                        100, nullptr, nullptr, nullptr, nullptr);
    EnableWindow(user.host_window(), FALSE);
    user.use(show_before(user.host_window()),
             {owned, [&](HWND) { EXPECT_FALSE(IsWindowEnabled(second)); }, press(VK_ESCAPE)});
    EXPECT_TRUE(IsWindowEnabled(second));
    EXPECT_FALSE(IsWindowEnabled(user.host_window())) << "the host disabled it itself";
    DestroyWindow(second);
}

// What VB6's and Delphi's run-time libraries, tool bars and splash windows look like.
TEST_F(Forms, BelongToARealWindowAndLieAboveASplash) {
    struct Other {
        const char* which;
        DWORD extended_style;
        DWORD style;
        int size_px;
    };
    constexpr Other others[] = {
        {"empty", 0, WS_POPUP | WS_VISIBLE, 0},
        {"hidden", 0, WS_POPUP, 50},
        {"tool bar", WS_EX_TOOLWINDOW, WS_POPUP | WS_VISIBLE, 50},
        {"minimised", 0, WS_OVERLAPPEDWINDOW | WS_VISIBLE | WS_MINIMIZE, 50},
        {"splash", WS_EX_TOPMOST | WS_EX_TOOLWINDOW, WS_POPUP | WS_VISIBLE, 50}};
    for (const Other& other : others) {
        SCOPED_TRACE(other.which);
        const HWND window =
            CreateWindowExW(other.extended_style, L"Static", L"", other.style, 0, 0, other.size_px,
                            other.size_px, nullptr, nullptr, nullptr, nullptr);
        const auto look = [&](HWND form) {
            EXPECT_EQ(GetWindow(form, GW_OWNER), user.host_window());
            const LONG on_top = GetWindowLongW(form, GWL_EXSTYLE) & WS_EX_TOPMOST;
            EXPECT_EQ(on_top != 0, (other.extended_style & WS_EX_TOPMOST) != 0);
        };
        for (const HWND active : {window, static_cast<HWND>(nullptr)}) {
            SetActiveWindow(active);
            user.use(about, {look, press(VK_ESCAPE)});
        }
        DestroyWindow(window);
    }
}

TEST_F(Forms, ASecondCallOpensNothingAndBringsTheFirstFormBack) {
    const auto of_another_object = com::make_about_window();
    user.use(about, {[&](HWND form) {
                 of_another_object->show(content.about);
                 EXPECT_EQ(open_forms(), std::vector<HWND>{form});
                 // The other kind opens over it; a call for the first one then leads to what lies
                 // on top.
                 user.soon([&](HWND above) {
                     EXPECT_EQ(GetWindow(above, GW_OWNER), form);
                     EXPECT_FALSE(IsWindowEnabled(form));
                     SetActiveWindow(user.host_window());
                     of_another_object->show(content.about);
                     EXPECT_EQ(open_forms().size(), 2u);
                     EXPECT_EQ(GetActiveWindow(), above);
                     press(VK_ESCAPE)(above);
                 });
                 message_window->show(content.message);
                 EXPECT_EQ(GetActiveWindow(), form);
                 press(VK_ESCAPE)(form);
             }});
    user.use(about, {press(VK_ESCAPE)});
}

TEST_F(Forms, EndWithTheProgramAndWithTheHostsWindow) {
    user.use(about, {[](HWND) { PostQuitMessage(5); }});
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(message.wParam, 5u);
    user.use(message_form, {[&](HWND) { DestroyWindow(user.host_window()); }});
}

TEST_F(Forms, RetrievalShowsItsWorkAndEndsWithIt) {
    const auto look = [](HWND form) {
        expect_texts(form, {{TAVRIX_RETRIEVAL_CONNECTION, u"poczta.firma.example:995"},
                            {TAVRIX_RETRIEVAL_STATUS, u"ODBIERAM"}});
        EXPECT_EQ(SendDlgItemMessageW(form, TAVRIX_RETRIEVAL_PROGRESS, PBM_GETPOS, 0, 0), 700);
    };
    const auto show = [&](ShownRetrieval& work) { return [&] { retrieval_window->show(work); }; };
    for (const Step& close : {press(VK_ESCAPE), click_cross(), click(IDCANCEL)}) {
        for (ShownRetrieval* work : {&content.manager, &content.socket}) {
            work->cancelled = false;
            user.use(show(*work), {look, close});
            EXPECT_TRUE(work->cancelled);
        }
    }
    // Nobody is there to press anything.
    ShowWindow(user.host_window(), SW_HIDE);
    content.manager.pieces_left = 5;
    retrieval_window->show(content.manager);
    EXPECT_FALSE(content.manager.cancelled) << "it was over";
    EXPECT_TRUE(open_forms().empty());
}

const char* const expected_scale = "TAVRIX_TEST_DOTS_PER_INCH";

TEST_F(Forms, AreReadable) {
    const char* expected = std::getenv(expected_scale);
    const windows::MemoryDevice screen(CreateCompatibleDC(nullptr));
    EXPECT_EQ(GetDeviceCaps(screen.get(), LOGPIXELSX),
              expected == nullptr ? 96 : std::atoi(expected));
    const base::Text words =
        u"Żółć i gęślą jaźń & inne słowa, które razem wszystkie, ile ich tu jest, nie mieszczą się "
        u"w jednym wierszu okna.";
    for (const bool more_than_the_templates_have_room_for : {false, true}) {
        if (more_than_the_templates_have_room_for) {
            content.about.title = words;
            content.about.description = words + u"\n\n" + words + u"\nKoniec.";
        }
        user.use(about, {expect_readable_layout, press(VK_ESCAPE)});
        user.use(message_form, {expect_readable_layout, press(VK_ESCAPE)});
        for (ShownRetrieval* work : {&content.manager, &content.socket}) {
            user.use([&] { retrieval_window->show(*work); },
                     {expect_readable_layout, press(VK_ESCAPE)});
        }
    }
}

TEST_F(Forms, FollowTheUsersMessageFontAndKeepToTheScreen) {
    NONCLIENTMETRICSW before{};
    before.cbSize = sizeof before;
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof before, &before, 0);
    NONCLIENTMETRICSW larger = before;
    larger.lfMessageFont.lfHeight = before.lfMessageFont.lfHeight * 3 / 2;
    larger.lfMessageFont.lfItalic = TRUE;
    SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof larger, &larger, 0);
    const auto in_that_font = [&](HWND form) {
        LOGFONTW font{};
        GetObjectW(reinterpret_cast<HFONT>(SendMessageW(form, WM_GETFONT, 0, 0)), sizeof font,
                   &font);
        EXPECT_EQ(font.lfHeight, larger.lfMessageFont.lfHeight);
        EXPECT_TRUE(font.lfItalic);
        expect_readable_layout(form);
    };
    user.use(about, {in_that_font, press(VK_ESCAPE)});
    SystemParametersInfoW(SPI_SETNONCLIENTMETRICS, sizeof before, &before, 0);

    // One word that no line has room for, then more lines than the screen.
    content.about.description = base::Text(300, u'x');
    user.use(about, {expect_readable_layout, press(VK_ESCAPE)});
    content.about.description = base::Text(500, u'\n');
    user.use(about, {expect_on_the_screen, press(VK_ESCAPE)});
}

// A program learns the scale of its screen when it starts.
TEST_F(Forms, AreReadableAtTwiceTheSize) {
    const wchar_t* desktop = L"Control Panel\\Desktop";
    const DWORD twice = 192;
    RegSetKeyValueW(HKEY_CURRENT_USER, desktop, L"LogPixels", REG_DWORD, &twice, sizeof twice);
    _putenv_s(expected_scale, "192");
    // Its results count as this test's, not as another program's.
    _putenv_s("GTEST_OUTPUT", "");
    const base::Text program = beside_program(u"com_test.exe");
    EXPECT_EQ(
        _wspawnl(_P_WAIT, windows::wide(program), L"com_test.exe",
                 L"--gtest_filter=Forms.AreReadable:*WhateverTheHostGives:PrinterForm.*", nullptr),
        0);
    _putenv_s(expected_scale, "");
    // Wine's own state: 96 without a value.
    RegDeleteKeyValueW(HKEY_CURRENT_USER, desktop, L"LogPixels");
}

TEST_F(Forms, LeaveNothingBehind) {
    const std::size_t before_font = count_gdi_objects();
    windows::GdiFont font(CreateFontIndirectW(std::array<LOGFONTW, 1>().data()));
    ASSERT_EQ(count_gdi_objects(), before_font + 1) << "the count does not count";
    font.reset();

    const auto open_both = [&] {
        user.use(about, {press(VK_ESCAPE)});
        user.use(message_form, {press(VK_ESCAPE)});
    };
    // What the system makes once and keeps.
    open_both();
    const std::size_t objects = count_gdi_objects();
    constexpr int openings = 50;
    for (int i = 0; i < openings; ++i) open_both();
    EXPECT_LT(count_gdi_objects(), objects + openings);
}

}  // namespace
}  // namespace tavrix::test
