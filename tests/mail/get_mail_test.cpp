// Fetching mail from a mailbox that does as it is told: what is said on the wire, what becomes of
// trouble, and that nothing is deleted before it is safe.

#include <gtest/gtest.h>

#include <algorithm>

#include "mail/cls_get_mail.h"
#include "mail/pop3/refusal.h"
#include "tests/mail/fake_mailbox.h"
#include "tests/mail/reading_bench.h"
#include "tests/support/failing.h"

namespace tavrix::test {
namespace {

using mail::RetrievalForm;
using std::chrono::milliseconds;

constexpr RetrievalForm both_forms[] = {RetrievalForm::manager, RetrievalForm::socket};
constexpr std::string_view session = "connect\nUSER jan\nPASS tajne\nSTAT\n";
constexpr std::string_view fetched = "RETR 1\nDELE 1\nQUIT\n";

// As it goes over the line; the second line of its text begins with a dot.
std::string message_with_file(const std::string& name) {
    return ReadingBench::sent(
        "From: ola@firma.example\nSubject: " + name +
        "\nContent-Type: multipart/mixed; boundary=\"------=_x\"\n\n--------=_x\n"
        "Content-Type: text/plain\n\ntekst\n..kropka\n--------=_x\n"
        "Content-Type: application/pdf; name=\"" +
        name + "\"\nContent-Transfer-Encoding: base64\n\nQUJDRA==\n--------=_x--\n");
}

struct RecordingTrace final : ports::Trace {
    void look_for_switch() noexcept override { ++looked; }
    void write(base::TextView entry) noexcept override { entries.push_back(base::to_utf8(entry)); }
    int looked = 0;
    std::vector<std::string> entries;
};

/// The form of somebody who watches, and cancels at the `patience`-th look.
struct WatchedWindow final : mail::RetrievalWindow {
    void show(mail::RetrievalWork& work) noexcept override {
        while (work.go_on(milliseconds(100))) {
            labels = work.labels();
            if (--patience == 0) work.cancel();
        }
    }
    mail::RetrievalLabels labels;
    int patience = -1;
};

class GetMail : public testing::Test {
  protected:
    mail::RetrievalPorts for_retrieval() {
        return {std::make_unique<MailboxStream>(box), clock, trace, *reading.code_page, [this] {
                    return std::make_shared<mail::CMessage>(mail::MessagePorts{
                        store, clock, *reading.code_page, trace, reading.system});
                }};
    }
    mail::ClsGetMail object() {
        return mail::ClsGetMail({window, store, trace,
                                 [this](RetrievalForm form) {
                                     if (form == RetrievalForm::manager && !has_manager) {
                                         access_denied();
                                     }
                                     return for_retrieval();
                                 },
                                 settings});
    }
    bool empty_the_box(bool remove = true) {
        return object().cmdGetMail(u"poczta", 110, u"jan", base::SecretText(u"tajne"), remove, u"",
                                   u"", reading.folder());
    }
    std::int32_t run_once(RetrievalForm form) {
        settings.folder = reading.folder();
        settings.user = u"jan";
        settings.password = base::SecretText(u"tajne");
        settings.delete_stored = true;
        mail::Retrieval retrieval(form, settings, for_retrieval());
        window.show(retrieval);
        failure = retrieval.failure();
        has_message = retrieval.message() != nullptr;
        return retrieval.run_result();
    }

    MovingClock clock;
    FakeMailbox box{clock};
    ReadingBench reading;
    FailingAt failing;
    std::unique_ptr<ports::FileStore> disk = ports::make_native_file_store("");
    FailingFileStore store{*disk, failing};
    RecordingTrace trace;
    WatchedWindow window;
    bool has_manager = true;
    bool has_message = false;
    base::Text failure;
    mail::RetrievalSettings settings;
};

TEST_F(GetMail, EmptiesTheBoxOneConnectionForEachMessage) {
    for (const bool manager : {true, false}) {
        has_manager = manager;
        box.messages = {message_with_file("a.pdf"), message_with_file("b.pdf"),
                        message_with_file("c.pdf")};
        box.said.clear();
        box.bytes_at_once = manager ? 3 : std::string::npos;
        EXPECT_TRUE(empty_the_box());
        std::string expected;
        for (int i = 0; i < 3; ++i) expected.append(session).append(fetched);
        EXPECT_EQ(box.said, expected.append(session).append("QUIT\n"));
        EXPECT_TRUE(box.messages.empty());
        for (const char* name : {"in/a.pdf", "in/b.pdf", "in/c.pdf"}) {
            EXPECT_EQ(reading.files()[name], "ABCD") << name;
        }
    }
}

TEST_F(GetMail, TheManagerRestoresDotsAndTheSocketFormDoesNot) {
    for (const bool manager : {true, false}) {
        has_manager = manager;
        box.messages = {message_with_file("a.pdf")};
        const auto message = object().cmdGetMailM(
            u"poczta", 110, u"jan", base::SecretText(u"tajne"), false, reading.folder(), false);
        ASSERT_TRUE(message);
        EXPECT_EQ(message->text<mail::MessageProperty::MessageText>(),
                  manager ? u"tekst\r\n.kropka\r\n" : u"tekst\r\n..kropka\r\n");
        EXPECT_EQ(box.messages.size(), 1u);
    }
    // A password that is to be kept from others' eyes is not said in the clear.
    box.said.clear();
    EXPECT_FALSE(object().cmdGetMailM(u"poczta", 110, u"jan", base::SecretText(u"tajne"), false,
                                      reading.folder(), true));
    EXPECT_EQ(box.said, "");
}

TEST_F(GetMail, TroubleEndsTheRunAndDeletesNothing) {
    struct {
        const char* command;
        const char* answer;
        std::int32_t result;
    } const cases[] = {
        {"", "-ERR zamknięte", -1}, {"", "HTTP/1.1 400 Bad", -1},
        {"USER", "-ERR", -1},       {"PASS", "-ERR [AUTH]\x1B nie", -1},
        {"STAT", "-ERR", -1},       {"STAT", "+OK wiele", -1},
        {"STAT", "+OK", -1},        {"STAT", "+OK -1 0", 0},
        {"STAT", "+OK 0 0", 0},     {"DELE", "-ERR", -1},
        {"QUIT", "-ERR", -1},       {"STAT", "+OK 2147483648 99999999999999999999", 1},
    };
    for (const RetrievalForm form : both_forms) {
        for (const auto& c : cases) {
            box.messages = {message_with_file("a.pdf")};
            box.answers = {{c.command, c.answer}};
            const milliseconds began = clock.slept;
            EXPECT_EQ(run_once(form), c.result) << c.command << " " << c.answer;
            if (c.result != -1) continue;
            EXPECT_TRUE(window.labels.status.starts_with(u"err:POP3 Błąd: ")) << c.command;
            EXPECT_EQ(window.labels.status.find(u'\x1B'), base::Text::npos);
            EXPECT_EQ(clock.slept - began, milliseconds(3000)) << "the failure stays in sight";
            EXPECT_EQ(box.messages.size(), c.command == std::string("QUIT") ? 0u : 1u);
        }
        box.messages = {message_with_file("a.pdf")};
        box.answers = {{"RETR", "-ERR nie ma"}};
        EXPECT_EQ(run_once(form), form == RetrievalForm::manager ? -1 : -2);
        box.answers = {{"", std::string(99'000, '+')}};
        box.bytes_at_once = 5'000;
        EXPECT_EQ(run_once(form), -1);
        box.bytes_at_once = std::string::npos;
    }
}

TEST_F(GetMail, AConnectionThatStopsAnywhereLosesNoMessage) {
    using AtCut = FakeMailbox::AtCut;
    for (const RetrievalForm form : both_forms) {
        std::map<std::size_t, bool> stored_at_end;
        for (const auto& [at_cut, trouble] :
             {std::pair(AtCut::silence, -2), {AtCut::end, -2}, {AtCut::reset, -10054}}) {
            box.at_cut = at_cut;
            for (box.cut_at = 0; box.cut_at < 400; box.cut_at += 5) {
                clock.slept = {};
                box.messages = {message_with_file("a.pdf")};
                const std::int32_t result = run_once(form);
                EXPECT_TRUE(result == trouble || result == 1) << box.cut_at;
                if (at_cut == AtCut::end) stored_at_end[box.cut_at] = result == 1;
                EXPECT_TRUE(at_cut != AtCut::reset || stored_at_end[box.cut_at] == (result == 1));
                EXPECT_TRUE(result == 1 || reading.files().empty() || box.messages.empty());
                EXPECT_TRUE(!box.messages.empty() || reading.files().size() == 1) << box.cut_at;
                EXPECT_LT(clock.slept, milliseconds(66'000)) << box.cut_at;
                std::filesystem::remove_all(reading.below(""));
            }
        }
    }
}

TEST_F(GetMail, AByteASecondIsTooSlowAndABigMessageIsNot) {
    box.messages = {message_with_file("a.pdf")};
    box.bytes_at_once = 1;
    box.per_arrival = milliseconds(1000);
    for (const RetrievalForm form : both_forms) EXPECT_EQ(run_once(form), -2);
    // The minute is the socket form's for everything.
    box.messages = {message_with_file("a.pdf") + std::string(1'000'000, 'x') + "\r\n"};
    box.bytes_at_once = 10'000;
    EXPECT_EQ(run_once(RetrievalForm::socket), -2);
    EXPECT_EQ(run_once(RetrievalForm::manager), 1);
    EXPECT_GT(clock.slept, milliseconds(100'000));
    // On the wall, not on the watch.
    mail::Watchdog watchdog({2026, 12, 31, 23, 58, 59});
    EXPECT_FALSE(watchdog.look({2026, 12, 31, 23, 59, 59}));
    EXPECT_EQ(mail::Watchdog({2026, 12, 31, 22, 58, 58}).look({2026, 12, 31, 22, 59, 59}), -2);
    EXPECT_EQ(watchdog.look({2027, 1, 1, 0, 0, 0}), -3);
    EXPECT_EQ(mail::Watchdog({2026, 12, 31, 23, 59, 30}).look({2026, 12, 31, 23, 59, 31}), -3);
}

TEST_F(GetMail, WhatCannotBeSavedStaysOnTheServer) {
    for (const bool manager : {true, false}) {
        has_manager = manager;
        const int calls = fail_each_call(failing, out_of_space, [&](int) {
            box.messages = {message_with_file("a.pdf")};
            std::filesystem::remove_all(reading.below(""));
            const bool emptied = empty_the_box();
            EXPECT_EQ(box.messages.empty(), reading.files().contains("in/a.pdf"));
            EXPECT_EQ(emptied, box.messages.empty());
        });
        EXPECT_GE(calls, 3) << "two folders and a file";
    }
    const int calls = fail_each_call(failing, out_of_memory, [&](int) {
        box.messages = {message_with_file("a.pdf")};
        std::filesystem::remove_all(reading.below(""));
        const bool stored = run_once(RetrievalForm::manager) == 1;
        EXPECT_EQ(has_message, stored);
        EXPECT_EQ(failure.empty(), stored);
        EXPECT_EQ(box.messages.empty(), stored);
    });
    EXPECT_EQ(calls, 2) << "a folder and a file";
    // Base64 that is none would be lost with the message.
    std::string damaged = message_with_file("a.pdf");
    damaged.replace(damaged.find("QUJD"), 4, "Q:JD");
    box.messages = {damaged};
    EXPECT_FALSE(empty_the_box());
    EXPECT_EQ(box.messages.size(), 1u);
    // What is no message at all does not block the manager's box.
    has_manager = true;
    box.messages = {"nic\r\n", message_with_file("b.pdf")};
    EXPECT_TRUE(empty_the_box());
    EXPECT_TRUE(box.messages.empty());
    EXPECT_TRUE(reading.files().rbegin()->first.ends_with("b.pdf"));
    EXPECT_TRUE(reading.files().begin()->first.ends_with(".eml"));
    EXPECT_FALSE(
        object().cmdGetMail(u"poczta", 110, u"jan", base::SecretText(u""), true, u"", u"", u""));
}

TEST_F(GetMail, TheUserEndsWhatWouldNeverEnd) {
    box.messages = {message_with_file("a.pdf")};
    window.patience = 200;
    EXPECT_FALSE(empty_the_box(false));
    EXPECT_EQ(window.patience, 0);
    EXPECT_EQ(box.messages.size(), 1u);
    EXPECT_EQ(reading.files().size(), 1u) << "the same bytes again";
    EXPECT_TRUE(settings.password.empty());
    box.said.clear();
    EXPECT_FALSE(object().cmdGetMail(u"poczta", 110, u"jan\r\nDELE 1", base::SecretText(u"x"), true,
                                     u"", u"", reading.folder()));
    EXPECT_FALSE(object().cmdGetMail(u"poczta", 110, u"jan", base::SecretText(u"x→"), true, u"",
                                     u"", reading.folder()));
    EXPECT_EQ(box.said, "");
}

TEST_F(GetMail, WritesItsMarks) {
    box.messages = {message_with_file("a.pdf")};
    EXPECT_EQ(run_once(RetrievalForm::manager), 1);
    std::string steps;
    for (const std::string& entry : trace.entries) {
        if (entry.starts_with("C_Getmail:Command2_Click:")) steps += entry.substr(24);
    }
    EXPECT_EQ(steps, ":1:2:3:3:dodje:3:dodane:3:kasuje:3:kończe:4:kończe all");
    EXPECT_EQ(trace.looked, 1);
    trace.entries.clear();
    box.at_cut = FakeMailbox::AtCut::reset;
    box.cut_at = 5;
    EXPECT_EQ(run_once(RetrievalForm::socket), -10054);
    EXPECT_EQ(window.labels.status, u"zerwane");
    const auto has = [&](const char* entry) {
        return std::ranges::find(trace.entries, entry) != trace.entries.end();
    };
    for (const char* entry : {"C_Getmail:Timer_Timer:1", "C_Getmail:Winsock1_DataArrival:1",
                              "C_Getmail:Winsock1_DataArrival:44", "C_Getmail:DisconnectMe:2k",
                              "C_Getmail:Winsock1_Error:1:10054 zerwane"}) {
        EXPECT_TRUE(has(entry)) << entry;
    }
}

TEST(Refusal, IsExplainedWithTheServersOwnWords) {
    for (const auto& [reply, meaning] :
         {std::pair(u"-ERR [IN-USE] zajęte", u"Skrzynka jest zajęta"),
          {u"-ERR [AUTH] Plaintext authentication disallowed", u"Serwer nie przyjmuje haseł"},
          {u"-ERR [AUTH] Web login required: oauth", u"To konto wymaga OAuth"},
          {u"-ERR [auth] nie", u"Serwer odrzucił nazwę"},
          {u"-ERR", u"-ERR"}}) {
        EXPECT_TRUE(mail::explained_refusal(reply).starts_with(meaning));
        EXPECT_TRUE(mail::explained_refusal(reply).ends_with(reply));
    }
}

}  // namespace
}  // namespace tavrix::test
