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

/// A window that is not there: `while_open` is what happens while it is shown.
template <typename Window, typename Content>
struct FakeWindow final : Window {
    std::function<void(const Content&)> while_open = [](const Content&) {};
    void show(const Content& content) noexcept override { while_open(content); }
};

class CInfoTest : public testing::Test {
  protected:
    FakeWindow<AboutWindow, AboutBox> about_window;
    FakeWindow<mail::MessageWindow, mail::MessageForm> message_window;
    test::FakeClock clock;
    test::FakeRegistry registry;
    test::FakeDesktop desktop;
    HandOver hand_over;
    std::function<Settings()> load_settings = [] {
        Settings settings;
        settings.mail.helpdesk_address = u"pomoc@firma.example";
        settings.mail.helpdesk_routes = {{u"5265877635", u"opiekun@firma.example"}};
        return settings;
    };
    std::unique_ptr<ports::Locale> locale = ports::make_native_locale();
    std::unique_ptr<ports::CodePage> code_page = ports::make_native_code_page();
    CInfo info{{about_window,
                message_window,
                clock,
                *locale,
                {registry, *code_page, desktop, desktop},
                hand_over,
                [this] { return load_settings(); }}};

    Text recipients_for(const Text& tax_number, const Text& more) {
        info.sendmail(u"", tax_number, u"", u"", u"", u"", u"", more);
        return hand_over.mail.recipients;
    }
};

/// The record's texts in one line.
Text all_of(const mail::MailRecord& record) {
    Text all;
    for (const Text& text :
         {record.source, record.tax_number, record.host_version, record.sender, record.subject,
          record.body[0], record.body[1], record.body[2], record.attachments}) {
        all += text + u"/";
    }
    return all + base::to_decimal(record.mode);
}

TEST_F(CInfoTest, SaysItsVersion) {
    EXPECT_EQ(info.VersjaLib(), u"10.0.36.Tavrix");
    Text shown;
    about_window.while_open = [&](const AboutBox& box) { shown = box.title + u"/" + box.version; };
    info.OProgramie();
    EXPECT_EQ(shown, u"Tavrix/10.0.36");
}

TEST_F(CInfoTest, HandsTheMessageForTheHelpdeskToTheForm) {
    Text seen;
    message_window.while_open = [&](const mail::MessageForm& form) {
        seen = all_of(form.record) + u"/" + form.date;
        EXPECT_EQ(form.record.result, 0);
        form.record.result = 7;
    };
    clock.now = {2026, 11, 21, 13, 5, 0};
    hand_over.mail.sender = u"somebody";
    hand_over.mail.result = 3;
    EXPECT_EQ(info.sendmail(u"Magazyn", u"526", u"7.1", u"a", u"b", u"c", u"C:\\x.log", u""), 7);
    EXPECT_EQ(seen, u"Magazyn/526/7.1//BOK-QUEN/a/b/c/C:\\x.log/2/2026-11-21");
    message_window.while_open = [](const mail::MessageForm&) {};
    EXPECT_EQ(info.SendMail_dowolny(u"ja@a.example", u"on@b.example", u"Oferta", u"d", u"e", u"f",
                                    u"x;y", u"999", 1),
              0)
        << "a form closed by its cross leaves no result";
    EXPECT_EQ(all_of(hand_over.mail), u"Magazyn/526/7.1/ja@a.example/Oferta/d/e/f/x;y/1")
        << "what the host does not give is the last message's";
    EXPECT_EQ(hand_over.mail.recipients, u"on@b.example");
}

TEST_F(CInfoTest, FindsTheHelpdeskOfATaxNumber) {
    const Text both = u"pomoc@firma.example; opiekun@firma.example";
    EXPECT_EQ(recipients_for(u"5265877635", u""), both);
    EXPECT_EQ(recipients_for(u"526-58-77-635", u"; ktos@inny.example"),
              both + u"; ktos@inny.example");
    EXPECT_EQ(recipients_for(u"1111111111", u"ktos@inny.example"),
              u"pomoc@firma.examplektos@inny.example")
        << "the caller brings its own separator";
}

TEST_F(CInfoTest, ACallWhileTheFormIsOpenWritesIntoTheSameRecord) {
    int calls = 0;
    message_window.while_open = [&](const mail::MessageForm& form) {
        if (++calls > 1) return;
        info.SendMail_dowolny(u"", u"drugi@b.example", u"", u"", u"", u"", u"", u"", 1);
        EXPECT_EQ(form.record.recipients, u"drugi@b.example");
        form.record.result = 1;
    };
    EXPECT_EQ(info.sendmail(u"", u"", u"", u"", u"", u"", u"", u""), 1);
}

TEST_F(CInfoTest, ShowsWhatIsWrongWithTheSettings) {
    load_settings = []() -> Settings {
        throw base::AutomationError(base::ErrorNumber::component_failed, u"", u"zły klucz");
    };
    message_window.while_open = [](const mail::MessageForm&) { ADD_FAILURE() << "shown"; };
    EXPECT_EQ(info.sendmail(u"", u"", u"", u"", u"", u"", u"", u""), 0);
    EXPECT_EQ(desktop.done, std::vector<Text>{u"message zły klucz"});
    EXPECT_EQ(info.VersjaLib(), u"10.0.36.Tavrix") << "needs no settings";
}

// Dozens of texts in a row: one in another's place is the slip that a compiler does not see.
TEST_F(CInfoTest, TheOtherDialogsGetTheirRecords) {
    const auto joined = [](const std::vector<Text>& texts) {
        Text all;
        for (const Text& text : texts) all += text;
        return all;
    };
    info.Informator(u"N", u"T", u"a", u"b", u"c", u"d", u"e", u"f", u"g", u"h", u"i", u"j", u"k",
                    u"l", u"m");
    const dialogs::InformatorRecord& informator = hand_over.informator;
    EXPECT_EQ(informator.header + informator.text + joined(informator.buttons), u"NTabcdefghijklm");

    Text value = u"V";
    std::int32_t outcome = 5;
    info.Informator_Zamówień(value, outcome, 4, u"N", u"T", u"a", u"b", u"c", u"d", u"e", u"f",
                             u"g", u"h", u"i", u"j", u"k", u"l", u"m", u"n");
    const dialogs::OrderInformatorRecord& orders = hand_over.order_informator;
    EXPECT_EQ(orders.header + orders.text + orders.value + joined(orders.buttons) + u"|" +
                  joined(orders.outcome_buttons),
              u"NTVabcdefghi|jklmn");
    EXPECT_EQ(orders.outcome_count * 10 + orders.outcome, 45);

    ports::HostObject grid;
    info.Wykres(true, grid, 1, u"a", 2, 3, 4, u"b", u"c", u"d", 5);
    const dialogs::ChartRecord& chart = hand_over.chart;
    EXPECT_EQ(chart.grid, nullptr) << "the host's own, and only while the call lasts";
    EXPECT_EQ(chart.text + chart.title + chart.kind + chart.checks, u"abcd");
    EXPECT_EQ((std::vector<int>{chart.full_screen, chart.column, chart.x1, chart.x2, chart.x3,
                                chart.options}),
              (std::vector<int>{1, 1, 2, 3, 4, 5}));

    std::vector<Text> databases{u"a", u"b"};
    Text first = u"c";
    Text second = u"d";
    Text server = u"e";
    EXPECT_FALSE(info.Browse(2, databases, first, second, server));
    const dialogs::BrowserRecord& browser = hand_over.browser;
    EXPECT_EQ(
        joined(browser.databases) + browser.connection_1 + browser.connection_2 + browser.server,
        u"abcde");
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
