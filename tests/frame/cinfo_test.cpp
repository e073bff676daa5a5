#include "frame/cinfo.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "ports/native/adapters.h"
#include "tests/support/fake_clock.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/fake_registry.h"

namespace tavrix::frame {
namespace {

using base::Text;
using ports::RegistryRoot;

/// Windows that are not there: `while_open` is what happens while one is shown.
struct FakeAboutWindow final : AboutWindow {
    std::function<void(const AboutBox&)> while_open;
    void show(const AboutBox& box) noexcept override {
        if (while_open) while_open(box);
    }
};
struct FakeMessageWindow final : mail::MessageWindow {
    std::function<void(const mail::MessageForm&)> while_open;
    void show(const mail::MessageForm& form) noexcept override {
        if (while_open) while_open(form);
    }
};

class CInfoTest : public testing::Test {
  protected:
    FakeAboutWindow about_window;
    FakeMessageWindow message_window;
    test::FakeClock clock;
    test::FakeRegistry registry;
    test::FakeDesktop desktop;
    HandOver hand_over;
    Settings settings;
    std::unique_ptr<ports::Locale> locale = ports::make_native_locale();
    std::unique_ptr<ports::CodePage> code_page = ports::make_native_code_page();
    CInfo info{{about_window,
                message_window,
                clock,
                *locale,
                {registry, *code_page, desktop, desktop},
                hand_over,
                [this] { return settings; }}};

    void SetUp() override {
        settings.mail.helpdesk_address = u"pomoc@firma.example";
        settings.mail.helpdesk_routes = {{u"526-587-76-35", u"opiekun@firma.example"}};
    }
    Text recipients_for(const Text& tax_number, const Text& more) {
        info.sendmail(u"", tax_number, u"", u"", u"", u"", u"", more);
        return hand_over.mail.recipients;
    }
};

TEST_F(CInfoTest, SaysItsVersion) {
    EXPECT_EQ(info.VersjaLib(), u"10.0.36.Tavrix");
    Text shown;
    about_window.while_open = [&](const AboutBox& box) { shown = box.title + u"/" + box.version; };
    info.OProgramie();
    EXPECT_EQ(shown, u"Tavrix/10.0.36");
}

TEST_F(CInfoTest, HandsTheMessageForTheHelpdeskToTheForm) {
    clock.now = {2026, 11, 21, 13, 5, 0};
    mail::MailRecord seen;
    Text date;
    message_window.while_open = [&](const mail::MessageForm& form) {
        seen = form.record;
        date = form.date;
        form.record.result = 7;
    };
    hand_over.mail.sender = u"somebody";
    hand_over.mail.result = 3;
    EXPECT_EQ(info.sendmail(u"Magazyn", u"5265877635", u"7.1", u"a", u"b", u"c", u"C:\\x.log", u""),
              7);
    EXPECT_EQ(seen.source, u"Magazyn");
    EXPECT_EQ(seen.tax_number, u"5265877635");
    EXPECT_EQ(seen.host_version, u"7.1");
    EXPECT_EQ(seen.sender, u"");
    EXPECT_EQ(seen.subject, u"BOK-QUEN");
    EXPECT_EQ(seen.body, (std::array<Text, 3>{u"a", u"b", u"c"}));
    EXPECT_EQ(seen.attachments, u"C:\\x.log");
    EXPECT_EQ(seen.mode, 2);
    EXPECT_EQ(seen.result, 0);
    EXPECT_EQ(date, u"2026-11-21");
    message_window.while_open = nullptr;
    EXPECT_EQ(info.sendmail(u"", u"", u"", u"", u"", u"", u"", u""), 0)
        << "a form closed by its cross leaves no result";
}

TEST_F(CInfoTest, FindsTheHelpdeskOfATaxNumber) {
    const Text both = u"pomoc@firma.example; opiekun@firma.example";
    EXPECT_EQ(recipients_for(u"5265877635", u""), both);
    EXPECT_EQ(recipients_for(u"526-58-77-635", u"; ktos@inny.example"),
              both + u"; ktos@inny.example");
    EXPECT_EQ(recipients_for(u"1111111111", u""), u"pomoc@firma.example");
    EXPECT_EQ(recipients_for(u"1111111111", u"ktos@inny.example"),
              u"pomoc@firma.examplektos@inny.example")
        << "the caller brings its own separator";
}

TEST_F(CInfoTest, LetsTheHostAddressFreely) {
    info.sendmail(u"Magazyn", u"526", u"7.1", u"", u"", u"", u"", u"");
    EXPECT_EQ(info.SendMail_dowolny(u"ja@a.example", u"on@b.example", u"Oferta", u"a", u"b", u"c",
                                    u"x;y", u"999", 1),
              0);
    EXPECT_EQ(hand_over.mail.sender, u"ja@a.example");
    EXPECT_EQ(hand_over.mail.recipients, u"on@b.example");
    EXPECT_EQ(hand_over.mail.subject, u"Oferta");
    EXPECT_EQ(hand_over.mail.attachments, u"x;y");
    EXPECT_EQ(hand_over.mail.mode, 1);
    EXPECT_EQ(hand_over.mail.tax_number, u"526") << "not this call's, and so the last one's";
}

TEST_F(CInfoTest, ACallWhileTheFormIsOpenWritesIntoTheSameRecord) {
    int calls = 0;
    message_window.while_open = [&](const mail::MessageForm& form) {
        if (++calls > 1) return;
        EXPECT_EQ(info.SendMail_dowolny(u"", u"drugi@b.example", u"", u"", u"", u"", u"", u"", 1),
                  0);
        EXPECT_EQ(form.record.recipients, u"drugi@b.example");
        form.record.result = 1;
    };
    EXPECT_EQ(info.sendmail(u"", u"", u"", u"", u"", u"", u"", u""), 1);
}

TEST_F(CInfoTest, ShowsWhatIsWrongWithTheSettings) {
    CInfo broken{{about_window,
                  message_window,
                  clock,
                  *locale,
                  {registry, *code_page, desktop, desktop},
                  hand_over,
                  []() -> Settings {
                      throw base::AutomationError(base::ErrorNumber::component_failed, u"",
                                                  u"Tavrix.json, wiersz 3: zły klucz");
                  }}};
    message_window.while_open = [](const mail::MessageForm&) { ADD_FAILURE() << "shown"; };
    EXPECT_EQ(broken.sendmail(u"", u"", u"", u"", u"", u"", u"", u""), 0);
    EXPECT_EQ(desktop.done, std::vector<Text>{u"message Tavrix.json, wiersz 3: zły klucz"});
    EXPECT_EQ(broken.VersjaLib(), u"10.0.36.Tavrix") << "needs no settings";
}

TEST_F(CInfoTest, TheOtherDialogsGetTheirRecords) {
    EXPECT_EQ(info.Informator(u"Nagłówek", u"Treść", u"0", u"1", u"2", u"3", u"4", u"5", u"6", u"7",
                              u"8", u"9", u"10", u"11", u"12"),
              0);
    EXPECT_EQ(hand_over.informator.header, u"Nagłówek");
    EXPECT_EQ(hand_over.informator.text, u"Treść");
    EXPECT_EQ(hand_over.informator.buttons,
              (std::vector<Text>{u"0", u"1", u"2", u"3", u"4", u"5", u"6", u"7", u"8", u"9", u"10",
                                 u"11", u"12"}));

    Text value = u"wartość";
    std::int32_t outcome = 5;
    EXPECT_EQ(
        info.Informator_Zamówień(value, outcome, 4, u"N", u"T", u"p1", u"p2", u"p3", u"p4", u"p5",
                                 u"p6", u"p7", u"p8", u"p9", u"c0", u"c1", u"c2", u"c3", u"c4"),
        0);
    const dialogs::OrderInformatorRecord& orders = hand_over.order_informator;
    EXPECT_EQ(orders.header + orders.text + orders.value, u"NTwartość");
    EXPECT_EQ(orders.outcome_count, 4);
    EXPECT_EQ(orders.outcome, 5);
    EXPECT_EQ(orders.buttons,
              (std::vector<Text>{u"p1", u"p2", u"p3", u"p4", u"p5", u"p6", u"p7", u"p8", u"p9"}));
    EXPECT_EQ(orders.outcome_buttons, (std::vector<Text>{u"c0", u"c1", u"c2", u"c3", u"c4"}));

    ports::HostObject grid;
    info.Wykres(true, grid, 1, u"tekst", 10, 20, 30, u"tytuł", u"rodzaj", u"pola", 2);
    const dialogs::ChartRecord& chart = hand_over.chart;
    EXPECT_TRUE(chart.full_screen);
    EXPECT_EQ(chart.grid, nullptr) << "the host's own, and only while the call lasts";
    EXPECT_EQ((std::vector<std::int32_t>{chart.column, chart.x1, chart.x2, chart.x3}),
              (std::vector<std::int32_t>{1, 10, 20, 30}));
    EXPECT_EQ(chart.options, 2);
    EXPECT_EQ(chart.text + chart.title + chart.kind + chart.checks, u"teksttytułrodzajpola");

    std::vector<Text> databases{u"firma", u"archiwum"};
    Text first = u"a";
    Text second = u"b";
    Text server = u"c";
    EXPECT_FALSE(info.Browse(2, databases, first, second, server));
    const dialogs::BrowserRecord& browser = hand_over.browser;
    EXPECT_EQ(browser.database_count, 2);
    EXPECT_EQ(browser.databases, databases);
    EXPECT_EQ(browser.connection_1 + browser.connection_2 + browser.server, u"abc");
}

class SystemInformation : public CInfoTest {
  protected:
    static constexpr auto root = RegistryRoot::local_machine;
    const std::string tool_key = "SOFTWARE\\Microsoft\\Shared Tools\\MSINFO";
    const std::string folder_key = "SOFTWARE\\Microsoft\\Shared Tools Location";
    const Text missing = u"message Brak zainstalownej opcji w Systemie Windows";

    std::vector<Text> press_the_button() {
        desktop.done.clear();
        about_window.while_open = [](const AboutBox& box) { box.show_system_information(); };
        info.OProgramie();
        return desktop.done;
    }
};

TEST_F(SystemInformation, TakesTheToolThenTheFolderThenSaysThatThereIsNone) {
    EXPECT_EQ(press_the_button(), std::vector<Text>{missing});

    registry.put(root, folder_key, "MSINFO", 1, {"C:\\Shared\0", 10});
    EXPECT_EQ(press_the_button(), std::vector<Text>{missing}) << "the file is not there";
    desktop.files.insert(u"C:\\Shared\\MSINFO32.EXE");
    EXPECT_EQ(press_the_button(), std::vector<Text>{u"start C:\\Shared\\MSINFO32.EXE"});

    registry.put(root, tool_key, "PATH", 1, {"D:\\info.exe\0", 12});
    EXPECT_EQ(press_the_button(), std::vector<Text>{u"start D:\\info.exe"})
        << "without asking whether the file is there";
    registry.put(root, tool_key, "PATH", ports::registry_expandable_text, {"%Tools%\\i.exe\0", 14});
    desktop.environment[u"%Tools%"] = u"E:\\Tools";
    EXPECT_EQ(press_the_button(), std::vector<Text>{u"start E:\\Tools\\i.exe"});
}

TEST_F(SystemInformation, SaysSoWhenTheToolDoesNotStart) {
    registry.put(root, tool_key, "PATH", 1, {"\0", 1});
    EXPECT_EQ(press_the_button(), std::vector<Text>{missing}) << "an empty path is no program";
    registry.put(root, tool_key, "PATH", 1, {"D:\\info.exe\0", 12});
    desktop.can_start = false;
    EXPECT_EQ(press_the_button(), (std::vector<Text>{u"start D:\\info.exe", missing}));
    registry.broken = true;
    EXPECT_EQ(press_the_button(), std::vector<Text>{missing});
}

}  // namespace
}  // namespace tavrix::frame
