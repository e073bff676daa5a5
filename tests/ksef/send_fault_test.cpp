#include "tests/ksef/send_fixture.h"

namespace tavrix::ksef {
namespace {

using test::Json;
using namespace std::chrono_literals;

struct Trouble {
    const char* step;
    Json fault;
    /// What the host gets; "*" stands for whatever follows.
    std::string text;
};

const std::string session_failed = "Błąd inicjalizacji sesji KSeF:";

class SendFaults : public SendFixture {
  protected:
    void expect_row_untouched(const std::string& where) {
        expect_whole_or_untouched(row(), where);
        EXPECT_EQ(row().at("status_ksef"), "") << where;
    }

    std::string send_with_fault(const char* step, Json fault) {
        sandbox->reset();
        today();
        fault["step"] = step;
        sandbox->fault(fault);
        return send();
    }
};

Json status(int code, const char* body = "") {
    return {{"kind", "status"}, {"status", code}, {"body", body}};
}
Json value_at(const char* path, Json value) {
    return {{"kind", "json"}, {"path", path}, {"value", std::move(value)}, {"count", -1}};
}
Json skipping(int skip, Json fault) {
    fault["skip"] = skip;
    return fault;
}

TEST_F(SendFaults, EveryStepHasItsTextAndLeavesTheRowAlone) {
    const std::string open = R"({"x":1})";
    const Trouble troubles[] = {
        {"auth/challenge",
         {{"kind", "refuse"}, {"count", -1}},
         session_failed + "auth/challenge:STATUS:0"},
        {"auth/challenge", status(500), session_failed + "Nieznany błą"},
        {"auth/challenge", {{"kind", "empty"}}, session_failed + "Nieznany błą"},
        {"auth/challenge", value_at("timestamp", "2026-11-21T08:15:30+00:00"),
         session_failed + "Nieznany błą"},
        {"security/public-key-certificates", status(503), session_failed + "Nieznany błą"},
        {"security/public-key-certificates", {{"kind", "html"}}, session_failed + "Nieznany błą"},
        // An element with both usages is neither.
        {"security/public-key-certificates",
         value_at("[0].usage", Json::array({"KsefTokenEncryption", "SymmetricKeyEncryption"})),
         session_failed + "Nieznany błą"},
        {"security/public-key-certificates", value_at("[0].certificate", "AAAA"),
         session_failed + "Nieznany błą"},
        {"security/public-key-certificates", value_at("[1].usage", Json::array({"Other"})),
         "Load RSA Public Key failed: *"},
        // The last key of a usage counts: this one is not for tokens.
        {"security/public-key-certificates",
         value_at("[1].usage", Json::array({"KsefTokenEncryption"})), session_failed + "{*"},
        {"auth/ksef-token", status(500, "{\"e\":1}"), session_failed + "{\"e\":1}"},
        {"auth/ksef-token", status(500), session_failed + "auth/ksef-token:STATUS:timeout"},
        {"auth/ksef-token",
         {{"kind", "refuse"}, {"count", -1}},
         session_failed + "auth/ksef-token:STATUS:timeout"},
        {"auth/status", status(400), session_failed + "auth/:STATUS:timeout"},
        {"auth/status", status(500, "padło"), session_failed + "padło"},
        {"auth/token/redeem", status(201), session_failed + "auth/token/redeem:STATUS:201"},
        {"auth/token/redeem", status(400, open.c_str()), session_failed + open},
        {"sessions/online", status(200), "sessions/online:STATUS:200"},
        {"sessions/online", status(503, "<html>zapora</html>"), "<html>zapora</html>"},
        {"sessions/online/invoices", status(500), "sessions/online/STATUS:500"},
        {"sessions/online/invoices", status(400, open.c_str()), open},
        {"sessions/invoices", status(500, "to ciało nie wraca"), "sessions//invoicesSTATUS:500"},
        {"sessions/invoices", {{"kind", "429"}}, "sessions//invoicesSTATUS:429"},
        {"sessions/invoices", {{"kind", "html"}}, "<*"},
        {"sessions/invoices", {{"kind", "empty"}}, "invoices[0].status.code:STATUS:"},
    };
    for (const Trouble& trouble : troubles) {
        const std::string where = std::string(trouble.step) + " " + trouble.fault.dump();
        const std::string result = send_with_fault(trouble.step, trouble.fault);
        if (trouble.text.ends_with('*')) {
            EXPECT_TRUE(result.starts_with(trouble.text.substr(0, trouble.text.size() - 1)))
                << where << result;
        } else {
            EXPECT_EQ(result, trouble.text) << where;
        }
        expect_row_untouched(where);
    }
}

TEST_F(SendFaults, WrongTokenEndsAtOnceAndCloses) {
    const std::string result = send_with_fault(
        "auth/status", value_at("status", {{"code", 450}, {"description", "Zły token"}}));
    EXPECT_NE(result.find("Zły token"), std::string::npos) << result;
    EXPECT_TRUE(clock.sleeps.empty());
    const auto closes = sandbox->requests("sessions/online/close");
    ASSERT_EQ(closes.size(), 1u);
    EXPECT_EQ(closes[0].at("authorization"), "authentication");
}

TEST_F(SendFaults, EveryWaitHasItsEnd) {
    Json still_open = skipping(1, value_at("status.code", 170));
    Json uncounted = {{"kind", "remove"}, {"path", "successfulInvoiceCount"}, {"count", -1}};
    const Json no_page = {{"kind", "status"}, {"status", 404}, {"body", ""}, {"count", -1}};
    const struct {
        const char* step;
        std::vector<Json> faults;
        std::string text;
        std::size_t sleeps;
        std::chrono::milliseconds slept;
    } waits[] = {
        {"auth/status",
         {value_at("status", {{"code", 100}, {"description", "W toku"}})},
         session_failed + "{",
         16,
         32'000ms},
        {"sessions/invoices", {value_at("invoices[0].status.code", 150)}, "{", 121, 232'000ms},
        {"sessions/status",
         {still_open, skipping(1, uncounted)},
         "sessions:STATUS:timeout",
         121,
         232'000ms},
        {"sessions/invoices/status", {no_page}, "Faktura o numerze KSeF: ", 119, 238'000ms},
    };
    for (const auto& [step, faults, text, sleeps, slept] : waits) {
        sandbox->reset();
        today();
        clock.sleeps.clear();
        for (Json fault : faults) {
            fault["step"] = step;
            sandbox->fault(fault);
        }
        const std::string result = send();
        EXPECT_TRUE(result.starts_with(text)) << step << result;
        EXPECT_EQ(clock.sleeps.size(), sleeps) << step;
        EXPECT_EQ(clock.slept(), slept) << step;
    }
    clock.sleeps.clear();
    EXPECT_EQ(send_with_fault("sessions/invoices/status",
                              {{"kind", "status"}, {"status", 404}, {"count", 5}}),
              "");
    EXPECT_EQ(clock.sleeps, std::vector<std::chrono::milliseconds>(5, 2000ms));
}

TEST_F(SendFaults, SessionThatIsAlreadyOverStopsBeforeSending) {
    for (const char* code : {"200", "300", "440", "99"}) {
        const std::string result =
            send_with_fault("sessions/status", value_at("status.code", code));
        EXPECT_NE(result.find("\"status\":{"), std::string::npos) << code << result;
        EXPECT_TRUE(sandbox->requests("sessions/online/invoices").empty()) << code;
    }
    Json once = value_at("status.code", "1000");
    once["count"] = 1;
    EXPECT_EQ(send_with_fault("sessions/status", once), "")
        << "ordered as text before 300: goes on";
    EXPECT_EQ(send_with_fault("sessions/status", status(500)), "")
        << "an unreadable session status goes on";
}

TEST_F(SendFaults, RefusedInvoiceGivesKsefsOwnAnswer) {
    invoice = base::replace_all(invoice, u"<P_2>", u"<P_2");
    const std::string result = send();
    EXPECT_NE(result.find("\"status\":{\"code\":4"), std::string::npos) << result;
    expect_row_untouched("not well-formed");
}

// From here on the invoice has its number; what fails costs the UPO at most.
TEST_F(SendFaults, AfterAcceptanceTheNumberStays) {
    const std::string accepted = "Faktura o numerze KSeF: ";
    const Trouble troubles[] = {
        {"sessions/status", skipping(1, {{"kind", "429"}}), "429 Too many Requests"},
        {"sessions/status", skipping(1, value_at("failedInvoiceCount", 3)),
         "failedInvoiceCount:STATUS:3"},
        {"storage/invoice-upo", status(404), accepted},
        {"storage/invoice-upo", {{"kind", "refuse"}, {"count", -1}}, accepted},
        {"storage/invoice-upo", {{"kind", "cut"}}, accepted},
        {"storage/invoice-upo", {{"kind", "empty"}}, accepted},
        {"storage/invoice-upo", {{"kind", "html"}}, accepted},
        {"sessions/invoices/status", value_at("upoDownloadUrl", "file:///etc/passwd"), accepted},
        {"sessions/invoices/status", {{"kind", "remove"}, {"path", "upoDownloadUrl"}}, accepted},
        {"sessions/invoices/status", {{"kind", "truncated"}}, accepted},
    };
    for (const Trouble& trouble : troubles) {
        const std::string where = std::string(trouble.step) + " " + trouble.fault.dump();
        const std::string result = send_with_fault(trouble.step, trouble.fault);
        const Row document = row();
        EXPECT_EQ(result,
                  trouble.text == accepted ? accepted + document.at("numer_ksef") : trouble.text)
            << where;
        EXPECT_EQ(document.at("status_ksef"), "200") << where;
        EXPECT_EQ(document.at("numer_ksef").size(), 35u) << where;
        EXPECT_EQ(document.at("UPO_ksef"), "") << where;
    }
}

TEST_F(SendFaults, BearerTokenStaysWithTheService) {
    // The same sandbox under another name is another origin.
    Json fault = {{"step", "sessions/invoices/status"},
                  {"kind", "json"},
                  {"path", "upoDownloadUrl"},
                  {"value", "http://localhost:" + sandbox->port() + "/storage/01/x/invoice-upo/y"}};
    sandbox->fault(fault);
    send();
    const auto foreign = sandbox->requests("storage/invoice-upo");
    ASSERT_EQ(foreign.size(), 1u);
    EXPECT_EQ(foreign[0].at("authorization"), "none");
}

// Whatever a server or a firewall does at whatever step: a text comes back, and the row is either
// as it was or holds the whole outcome.
TEST_F(SendFaults, NothingHalfDoneWhateverHappensWherever) {
    constexpr const char* steps[] = {"auth/challenge",           "security/public-key-certificates",
                                     "auth/ksef-token",          "auth/status",
                                     "auth/token/redeem",        "sessions/online",
                                     "sessions/status",          "sessions/online/invoices",
                                     "sessions/invoices",        "sessions/online/close",
                                     "sessions/invoices/status", "storage/invoice-upo"};
    constexpr const char* kinds[] = {"refuse",    "drop", "reset", "cut", "malformed",
                                     "truncated", "html", "empty", "drip"};
    for (const char* step : steps) {
        for (const char* kind : kinds) {
            const std::string result = send_with_fault(
                step, {{"kind", kind}, {"count", 3}, {"bytes", 200}, {"interval_ms", 1}});
            const Row document = row();
            const std::string where = std::string(step) + " " + kind + ": " + result;
            expect_whole_or_untouched(document, where);
            const bool recorded = document.at("status_ksef") == "200";
            EXPECT_TRUE(!result.empty() || document.at("UPO_ksef") != "") << where;
            EXPECT_TRUE(recorded || !result.empty()) << where;
        }
    }
}

TEST_F(SendFaults, SilentServerCostsTheTimeoutAndNoMore) {
    connection_settings.no_progress_timeout = 300ms;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(send_with_fault("auth/challenge", {{"kind", "hang"}}),
              session_failed + "auth/challenge:STATUS:0");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
}

}  // namespace
}  // namespace tavrix::ksef
