#include "frame/cinfo.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "dialogs/browser_session.h"
#include "ports/native/adapters.h"
#include "ports/portable/openssl_crypto.h"
#include "tests/support/fake_clock.h"
#include "tests/support/fake_desktop.h"
#include "tests/support/fake_grid.h"
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

/// A user who chooses what the test says, after what happens while the window is open.
struct FakeInformator final : dialogs::InformatorWindow {
    std::function<std::optional<dialogs::InformatorChoice>(const dialogs::InformatorForm&)> user =
        [](const auto&) { return std::nullopt; };
    std::optional<dialogs::InformatorChoice> show(
        const dialogs::InformatorForm& form) noexcept override {
        // A copy: the next one's choice may be told while this window is open.
        return std::function(user)(form);
    }
};

struct FakeBrowserWindow final : dialogs::BrowserWindow {
    std::optional<std::size_t> show(dialogs::BrowserSession&) noexcept override { return chosen; }
    std::optional<std::size_t> chosen;
};

/// Keeps what it is given, or fails in these words.
struct FakeMailer final : ports::InstantMailer {
    void send(const ports::InstantMail& mail) override {
        told += (mail.body_is_html ? u"html " : u"text ") + mail.file + u"|";
        if (failure)
            throw base::AutomationError(base::ErrorNumber::component_failed, u"", *failure);
    }
    Text told;
    std::optional<Text> failure;
};

/// A server that takes whatever it is told.
struct ObligingServer final : ports::Stream {
    void connect(const ports::StreamAddress&, ports::Security) override { answers_ = "220 x\r\n"; }
    bool connected_within(std::chrono::milliseconds) override { return true; }
    ports::Sent send(base::ByteView bytes, std::chrono::milliseconds) override {
        const std::string_view line = base::chars_of(bytes);
        if (line == "DATA\r\n")
            answers_ = "354 x\r\n";
        else if (!line.starts_with("Date"))
            answers_ = "250 x\r\n";
        return {bytes.size(), {}};
    }
    ports::Received receive(std::chrono::milliseconds) override {
        const std::string answer = std::exchange(answers_, {});
        if (answer.empty()) return {};
        const base::ByteView bytes = base::bytes_of(answer);
        return {ports::Received::State::data, {bytes.begin(), bytes.end()}, {}};
    }
    void close() noexcept override {}

  private:
    std::string answers_;
};

struct Stages final : mail::smtp::SendingListener {
    void on_stage(mail::smtp::Stage stage) override { told.append(mail::words_of(stage)) += u'|'; }
    bool goes_on(std::uint64_t, std::uint64_t) override { return true; }
    Text told;
};

/// `while_open` happens while it is shown; a second one is not shown then.
struct FakeChartWindow final : dialogs::ChartWindow {
    bool show(const std::function<dialogs::Chart()>& read) noexcept override {
        if (std::exchange(is_open, true)) return false;
        while_open(read());
        is_open = false;
        return true;
    }
    bool is_open = false;
    std::function<void(const dialogs::Chart&)> while_open = [](const dialogs::Chart&) {};
};

class CInfoTest : public testing::Test {
  protected:
    FakeMailer mailer;
    std::unique_ptr<ports::DataFiles> files = ports::make_native_files({});
    std::unique_ptr<ports::Crypto> crypto = ports::make_openssl_crypto();
    FakeWindow<AboutWindow, AboutBox> about_window;
    FakeWindow<mail::MessageWindow, mail::MessageForm> message_window;
    FakeChartWindow chart_window;
    FakeInformator informator_window;
    FakeBrowserWindow browser_window;
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
                chart_window,
                informator_window,
                clock,
                *locale,
                {registry, *code_page, desktop, desktop},
                hand_over,
                mailer,
                {{*files, *crypto, clock, [](auto&) { return std::chrono::minutes(0); }},
                 [](auto&) { return std::make_unique<ObligingServer>(); },
                 [] { return ports::ConnectionSettings(); }},
                [this] { return load_settings(); },
                browser_window,
                {}}};
};

Text joined(const std::vector<Text>& texts) {
    Text all;
    for (const Text& text : texts) all += text + u"/";
    return all;
}

/// The record's texts in one line.
Text all_of(const mail::MailRecord& record) {
    return joined({record.source, record.tax_number, record.host_version, record.sender,
                   record.recipients, record.subject, record.body[0], record.body[1],
                   record.body[2], record.attachments, base::to_decimal(record.mode)});
}

TEST_F(CInfoTest, HandsTheMessageToTheForm) {
    Text seen;
    bool is_open = false;
    message_window.while_open = [&](const mail::MessageForm& form) {
        if (std::exchange(is_open, true)) return;
        seen = all_of(form.record) + form.date;
        EXPECT_EQ(std::exchange(form.record.result, 7), 0);
        // A host that calls again while the form is open.
        EXPECT_EQ(info.SendMail_dowolny(u"x", u"x", u"x", u"x", u"x", u"x", u"x", u"x", 1), 0);
        EXPECT_EQ(all_of(form.record) + form.date, seen);
    };
    hand_over.mail.sender = u"somebody";
    EXPECT_EQ(info.sendmail(u"Magazyn", u"526-58-77-635", u"7.1", u"a", u"b", u"c", u"C:\\x.log",
                            u"; ktos@inny.example"),
              7);
    EXPECT_EQ(seen,
              u"Magazyn/526-58-77-635/7.1//"
              u"pomoc@firma.example; opiekun@firma.example; ktos@inny.example/"
              u"BOK-QUEN/a/b/c/C:\\x.log/2/2026-11-21");
    message_window.while_open = [](const mail::MessageForm&) {};
    EXPECT_EQ(info.SendMail_dowolny(u"ja@a.example", u"on@b.example", u"Oferta", u"d", u"e", u"f",
                                    u"x;y", u"999", 1),
              0)
        << "a form closed by its cross leaves no result";
    EXPECT_EQ(all_of(hand_over.mail),
              u"Magazyn/526-58-77-635/7.1/ja@a.example/on@b.example/Oferta/d/e/f/x;y/1/")
        << "what the host does not give is the last message's";
}

TEST_F(CInfoTest, TheFormSendsByTheSettings) {
    Stages stages;
    Text failures;
    message_window.while_open = [&](const mail::MessageForm& form) {
        failures += form.send(stages) + u"|";
        load_settings = [] {
            Settings settings;
            settings.mail.form_account.server = u"poczta.example";
            settings.mail.form_account.sender = u"ja@a.example";
            return settings;
        };
        form.record.recipients = u"on@b.example; x y@b.example";
        failures += form.send(stages) + u"|";
        form.record.recipients = u"on@b.example; ona@b.example";
        failures += form.send(stages);
    };
    EXPECT_EQ(info.sendmail(u"", u"", u"", u"a", u"", u"", u"", u""), 1);
    EXPECT_EQ(failures,
              u"W pliku ustawień nie ma serwera poczty (mail.smtp_server).|"
              u"Nieprawidłowy adres:  x y@b.example|");
    EXPECT_EQ(stages.told, u"Podpinam Pliki|Wysyłam|Wylogowuje|Wysłano|");
}

TEST_F(CInfoTest, SendsOneMessageAtOnce) {
    const auto send = [&](const Text& body, const Text& file) {
        return info.SendMailCDO(u"", u"", u"", body, u"", 25, u"", {}, file, false);
    };
    EXPECT_EQ(send(u"a</TD>", u"  ") + send(u"<SPAN Style", u" C:\\x ") + send(u"</spaN", u""),
              u"");
    EXPECT_EQ(send(u"<span><td></div>", u""), u"");
    EXPECT_EQ(mailer.told, u"html |html  C:\\x |html |text |");
    mailer.failure = u"The server said no.\r\n";
    EXPECT_EQ(send(u"", u""), u"The server said no.\r\n");
    mailer.failure = u"";
    EXPECT_EQ(send(u"", u""), u"nieznany błąd");
}

TEST_F(CInfoTest, ShowsWhatIsWrongWithTheSettings) {
    load_settings = []() -> Settings {
        throw base::AutomationError(base::ErrorNumber::component_failed, u"", u"zły klucz");
    };
    EXPECT_EQ(info.sendmail(u"", u"", u"", u"", u"", u"", u"", u""), 0);
    EXPECT_EQ(desktop.done, std::vector<Text>{u"message zły klucz"});
}

TEST_F(CInfoTest, AnInformatorGivesWhatWasChosenInItAndNothingOfAnotherOne) {
    const auto ask = [&](const Text& text) {
        return info.Informator(u"", text, u"a", u"", u"", u"", u"", u"", u"", u"", u"", u"", u"",
                               u"", u"");
    };
    Text value = u"przed";
    std::int32_t outcome = 4;
    const auto ask_for_order = [&] {
        return info.Informator_Zamówień(value, outcome, 5, u"", u"", u"a", u"", u"", u"", u"", u"",
                                        u"", u"", u"", u"x", u"", u"", u"", u"");
    };
    EXPECT_EQ(ask(u""), -1);
    EXPECT_EQ(ask_for_order(), -1);
    EXPECT_EQ(std::tie(value, outcome), std::tuple(u"przed", 4));
    using Choice = dialogs::InformatorChoice;
    informator_window.user = [](const auto&) { return Choice{1, std::nullopt, std::nullopt}; };
    EXPECT_EQ(ask_for_order(), 1);
    EXPECT_EQ(std::tie(value, outcome), std::tuple(u"przed", 4)) << "neither was touched";

    informator_window.user = [&](const auto&) {
        informator_window.user = [](const auto&) { return std::nullopt; };
        EXPECT_EQ(ask(u"druga"), -1) << "the host's timer asks while the first one is open";
        return Choice{0, std::nullopt, std::nullopt};
    };
    EXPECT_EQ(ask(u"pierwsza"), 0);
    EXPECT_EQ(hand_over.informator.text, u"pierwsza");
}

// Dozens of texts in a row: one in another's place is the slip that a compiler does not see.
TEST_F(CInfoTest, TheOtherDialogsGetTheirRecords) {
    info.Informator(u"N", u"T", u"a", u"b", u"c", u"d", u"e", u"f", u"g", u"h", u"i", u"j", u"k",
                    u"l", u"m");
    const dialogs::InformatorRecord& informator = hand_over.informator;
    EXPECT_EQ(informator.header + informator.text + joined(informator.buttons),
              u"NTa/b/c/d/e/f/g/h/i/j/k/l/m/");

    Text value = u"V";
    std::int32_t outcome = 5;
    info.Informator_Zamówień(value, outcome, 4, u"N", u"T", u"a", u"b", u"c", u"d", u"e", u"f",
                             u"g", u"h", u"i", u"j", u"k", u"l", u"m", u"n");
    const dialogs::OrderInformatorRecord& orders = hand_over.order_informator;
    EXPECT_EQ(orders.header + orders.text + orders.value + joined(orders.buttons) + u"|" +
                  joined(orders.outcome_buttons),
              u"NTVa/b/c/d/e/f/g/h/i/|j/k/l/m/n/");
    EXPECT_EQ(std::tie(orders.outcome_count, orders.outcome), std::tuple(4, 5));
}

TEST_F(CInfoTest, BrowseGivesTheChosenDatabaseAndKeepsNoPassword) {
    std::vector<base::SecretText> entries;
    entries.emplace_back(base::TextView(u"a"));
    entries.emplace_back(base::TextView(u"Data Source=s2;Pwd=tajne"));
    base::SecretText first{base::TextView(u"Data Source=s1;Pass")};
    base::SecretText second{base::TextView(u"word=tajne")};
    Text server = u"s0";
    const auto told = [&] {
        const dialogs::BrowserRecord& record = hand_over.browser;
        return Text(first.view()) + u"|" + Text(second.view()) + u"|" + server + u"|" +
               joined(record.databases) + record.connection + record.server;
    };
    EXPECT_FALSE(info.Browse(9, entries, first, second, server));
    EXPECT_EQ(told(),
              u"Data Source=s1;Pass|word=tajne|s0|"
              u"a/Data Source=s2;Pwd=***/Data Source=s1;Password=***s0");
    browser_window.chosen = 1;
    EXPECT_TRUE(info.Browse(2, entries, first, second, server));
    EXPECT_EQ(told(),
              u"Data Source=s2;Pwd=tajne||s2|a/Data Source=s2;Pwd=***/Data Source=s2;Pwd=***s2");
}

TEST_F(CInfoTest, ChartsTheHostsGridAndKeepsTheRecordOfTheChartThatWasSeen) {
    test::FakeGrid grid({{u"a", u"b"}, {u"c", u"1"}, {u"d", u"2"}});
    int charts = 0;
    chart_window.while_open = [&](const dialogs::Chart& chart) {
        ++charts;
        EXPECT_EQ(chart.title, u"T");
        EXPECT_EQ(chart.kind, dialogs::ChartKind::lines);
        EXPECT_TRUE(chart.full_screen && chart.options.legend && chart.options.grid);
        EXPECT_EQ(joined(chart.data.labels) + chart.data.label_heading, u"d/S");
        // A host that calls again while the chart is open.
        test::FakeGrid unread;
        info.Wykres(false, unread, 9, u"x", 9, 9, 9, u"x", u"x", u"x", 9);
    };
    info.Wykres(true, grid, 1, u"S", 2, 3, 0, u"T", u"liniowy", u"01", 5);
    EXPECT_EQ(charts, 1);
    const dialogs::ChartRecord& chart = hand_over.chart;
    EXPECT_EQ(chart.text + chart.title + chart.kind + chart.checks, u"STliniowy01");
    EXPECT_EQ(
        std::tie(chart.full_screen, chart.column, chart.x1, chart.x2, chart.x3, chart.options),
        std::tuple(true, 1, 2, 3, 0, 5));
}

TEST_F(CInfoTest, TheSystemsInformationIsTheToolThenTheFolderThenThatThereIsNone) {
    using Done = std::vector<Text>;
    const std::string tool_key = "SOFTWARE\\Microsoft\\Shared Tools\\MSINFO";
    const std::string folder_key = "SOFTWARE\\Microsoft\\Shared Tools Location";
    const Text missing = u"message Brak zainstalownej opcji w Systemie Windows";
    about_window.while_open = [](const AboutBox& box) { box.show_system_information(); };
    const auto put = [&](const std::string& key, const char* name, std::string_view value) {
        const auto type = value.starts_with('%') ? ports::registry_expandable_text : 1;
        registry.put(RegistryRoot::local_machine, key, name, type, value);
    };
    const auto press_the_button = [&] {
        desktop.done.clear();
        info.OProgramie();
        return desktop.done;
    };
    put(folder_key, "MSINFO", {"C:\\Shared\0", 10});
    EXPECT_EQ(press_the_button(), Done{missing}) << "the file is not there";
    desktop.files.insert(u"C:\\Shared\\MSINFO32.EXE");
    EXPECT_EQ(press_the_button(), Done{u"start C:\\Shared\\MSINFO32.EXE"});
    put(tool_key, "PATH", {"%Tools%\\i.exe\0", 14});
    EXPECT_EQ(press_the_button(), Done{u"start E:\\Tools\\i.exe"});
    put(tool_key, "PATH", {"\0", 1});
    EXPECT_EQ(press_the_button(), Done{missing}) << "an empty path is no program";
    put(tool_key, "PATH", {"D:\\info.exe\0", 12});
    desktop.can_start = false;
    EXPECT_EQ(press_the_button(), (Done{u"start D:\\info.exe", missing}));
    registry.broken = true;
    EXPECT_EQ(press_the_button(), Done{missing});
}

}  // namespace
}  // namespace tavrix::frame
