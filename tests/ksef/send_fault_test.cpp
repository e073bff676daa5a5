// What goes wrong while an invoice is sent, in the network and on the host's own machine, and what
// is left in memory.

#include <set>
#include <span>

#include "tests/ksef/send_faults.h"
#include "tests/support/failing.h"
#include "tests/support/freed_memory.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::ksef {
namespace {

using test::Json;
using namespace std::chrono_literals;

// An Ed25519 key signed by itself: one that signs, but encrypts nothing.
const char* const signing_key =
    "MIHUMIGHAhQrTZak0L9Bjp4ONWKzZ8zh0yz3hDAFBgMrZXAwDDEKMAgGA1UEAwwBdDAgFw0yNjExMjIwMzU2NTFaGA8y"
    "MTI2MTAyOTAzNTY1MVowDDEKMAgGA1UEAwwBdDAqMAUGAytlcAMhAGpb6xfIurlkXmpVcnQ4Mc54owB2kBfwHD/daO2I"
    "e+RvMAUGAytlcANBACHSDkmfdRyNblfj9wNdjKYVIQr+FEoZOiwv+d2LLdjHIYLjBt8c0zTzVJ4YAnVWEuvEPF6qcnbu"
    "s7TmRz3+RwE=";

class SendFaults : public SendFixture {
  protected:
    /// Rows: whether the document has its number; none of these has a UPO.
    void expect_outcomes(const test::Troubles& troubles, bool sent) {
        run_through(
            *sandbox, troubles, [&] { begin_anew(); },
            [&]() -> test::Outcome {
                const std::string result = send();
                expect_whole_or_untouched(result, result);
                EXPECT_EQ(!sandbox->requests("sessions/online/invoices").empty(), sent);
                const Row document = row();
                EXPECT_EQ(document.at("UPO_ksef"), "");
                return {result, document.at("numer_ksef").empty() ? "" : "K"};
            });
    }
};

TEST_F(SendFaults, BeforeSendingEveryStepHasItsText) {
    const char* const keys = "security/public-key-certificates";
    const Json both_usages = {"KsefTokenEncryption", "SymmetricKeyEncryption"};
    const Json for_tokens = Json::array({"KsefTokenEncryption"});
    const test::Troubles troubles = {
        {"auth/challenge", value_at("timestamp", "2026-11-21T08:15:30+00:00"), session_unknown},
        {keys, status(503), session_unknown},
        // An element with both usages is neither.
        {keys, value_at("[0].usage", both_usages), session_unknown},
        {keys, value_at("[1].usage", Json::array({"Other"})), "Load RSA Public Key failed: *"},
        // The last key of a usage counts: this one is not for tokens.
        {keys, value_at("[1].usage", for_tokens), session_failed + "{*"},
        {"auth/ksef-token", status(500, "{\"e\":1}"), session_failed + "{\"e\":1}"},
        {"auth/ksef-token", status(500), session_failed + "auth/ksef-token:STATUS:timeout"},
        {"auth/status", status(400), session_failed + "auth/:STATUS:timeout"},
        {"auth/status", status(500, "padło"), session_failed + "padło"},
        {"auth/token/redeem", status(201), session_failed + "auth/token/redeem:STATUS:201"},
        {"auth/token/redeem", status(400, "{}"), session_failed + "{}"},
        // A token with the end of a line is no header.
        {"auth/token/redeem", value_at("accessToken.token", "a\r\nX: 1"), unknown},
        {"sessions/online", status(503, "<html>zapora</html>"), "<html>zapora</html>"},
        {"sessions/online", status(200), "sessions/online:STATUS:200"},
        // A session that is already over; its code is ordered as text.
        {"sessions/status", value_at("status.code", "200"), "{*"},
        {"sessions/status", value_at("status.code", "300"), "{*"},
        {"sessions/status", value_at("status.code", "99"), "{*"},
    };
    expect_outcomes(troubles, false);
}

TEST_F(SendFaults, AfterSendingTheRowIsUntouchedOrHasTheNumber) {
    const char* const answer = "sessions/invoices";
    const test::Troubles refused = {
        {"sessions/online/invoices", status(500), "sessions/online/STATUS:500"},
        {answer, status(500, "to ciało nie wraca"), "sessions//invoicesSTATUS:500"},
        {answer, kind("html"), "<*"},
        {answer, kind("empty"), "invoices[0].status.code:STATUS:"},
    };
    expect_outcomes(refused, true);

    // From here on the invoice has its number; what fails costs the UPO at most.
    const char* const page = "sessions/invoices/status";
    const test::Troubles without_upo = {
        {"sessions/status", kind("429", 1), "429 Too many Requests", "K"},
        {"sessions/status", value_at("failedInvoiceCount", 3, 1), "failedInvoiceCount:STATUS:3",
         "K"},
        {page, value_at("upoDownloadUrl", "file:///etc/passwd"), accepted + "5265877635-*", "K"},
        {"storage/invoice-upo", kind("html"), accepted + "5265877635-*", "K"},
    };
    expect_outcomes(without_upo, true);
}

TEST_F(SendFaults, AWrongTokenEndsAndCloses) {
    send_with_fault("auth/status", wrong_token);
    const auto closes = sandbox->requests("sessions/online/close");
    ASSERT_EQ(closes.size(), 1u);
    EXPECT_EQ(closes[0].at("authorization"), "authentication");
}

TEST_F(SendFaults, ANumberIsReplacedByAnotherAndNeverTakenAway) {
    const Json duplicate = value_at("invoices[0].status", {{"code", 440}, {"description", "D"}});
    const std::pair<const char*, Json> faults[] = {
        {"sessions/invoices", without("invoices[0].ksefNumber")},
        {"sessions/invoices/status", without("ksefNumber")},
        {"sessions/invoices", duplicate},
        {"sessions/status", value_at("failedInvoiceCount", 1, 1)},
    };
    const std::tuple<std::size_t, std::string, std::size_t> answers[] = {
        {1, "", 35}, {2, accepted, 7}, {4, "failedInvoiceCount:STATUS:1", 7}};
    for (const auto& [fault_count, text, number_size] : answers) {
        begin_anew();
        connection->execute_script("update dok_fak set numer_ksef='EARLIER' where ddout_id=1001");
        for (auto [step, fault] : std::span(faults).first(fault_count)) {
            fault["step"] = step;
            sandbox->fault(fault);
        }
        EXPECT_EQ(send(), text);
        EXPECT_EQ(row().at("numer_ksef").size(), number_size) << text;
    }
}

TEST_F(SendFaults, OfAUsagesKeysTheLastReadableCounts) {
    const char* const step = "security/public-key-certificates";
    const Json published = Json::parse(sandbox->call("GET", std::string("/v2/") + step));
    const auto key = [](const char* certificate, const char* usage) {
        return Json{{"certificate", certificate}, {"usage", {usage}}};
    };
    const char* const token_usage = "KsefTokenEncryption";
    const char* const symmetric_usage = "SymmetricKeyEncryption";
    const std::tuple<Json, bool, std::string> lists[] = {
        {key(signing_key, token_usage), true, session_unknown},
        {key(signing_key, symmetric_usage), true, "RSA Encrypt AES Key failed: *"},
        {key(signing_key, token_usage), false, ""},
        {key(signing_key, symmetric_usage), false, ""},
        {key("AAAA", token_usage), true, ""},
        {key("AAAA", symmetric_usage), true, ""},
    };
    for (const auto& [other, is_last, text] : lists) {
        Json list = published;
        list.insert(is_last ? list.end() : list.begin(), other);
        expect_text(send_with_fault(step, status(200, list.dump().c_str())), text, list.dump());
    }
}

TEST_F(SendFaults, AReferenceOfDotsStaysASegment) {
    send_with_fault("sessions/online", value_at("referenceNumber", ".."));
    EXPECT_EQ(sandbox->requests("sessions/online/invoices").at(0).at("target"),
              "/api/v2/sessions/online/%2E%2E/invoices");
}

TEST_F(SendFaults, AnInvoiceWhoseAnswerIsLostIsNotSentAgainByItself) {
    send_with_fault("sessions/online/invoices", kind("drop"));
    EXPECT_EQ(sandbox->requests("sessions/online/invoices").size(), 1u);
    send();
    EXPECT_EQ(std::string(row().at("numer_ksef")).size(), 35u) << "the duplicate brings it";
}

TEST_F(SendFaults, BearerTokenNeverGoesToAnAddressOutOfAnAnswer) {
    const std::string port = sandbox->port();
    const std::string page = "/storage/01/x/invoice-upo/y";
    test::Sandbox stranger;
    const std::string other = stranger.port();
    const std::tuple<std::string, std::size_t, std::size_t> addresses[] = {
        {"http://127.0.0.1:" + port + page, 1, 0},
        {"http://127.0.0.1:" + other + page, 0, 1},
        {"http://user@127.0.0.1:" + other + page, 0, 0},
        {"http://127.0.0.1:" + port + "\\@127.0.0.1:" + other + page, 0, 0},
        {"http://127.0.0.1:" + other + page + "\r\nX: 1", 0, 0},
    };
    for (const auto& [address, own, strange] : addresses) {
        stranger.reset();
        send_with_fault("sessions/invoices/status", value_at("upoDownloadUrl", address));
        const auto expect_fetched = [&](test::Sandbox& from, std::size_t times) {
            const auto seen = from.requests("storage/invoice-upo");
            EXPECT_EQ(seen.size(), times) << address;
            for (const Json& request : seen) EXPECT_EQ(request.at("authorization"), "none");
        };
        expect_fetched(*sandbox, own);
        expect_fetched(stranger, strange);
    }
}

TEST_F(SendFaults, AnEncryptedServiceNamesNoUnencryptedStorage) {
    const test::ScratchFolder folder;
    connection_settings.private_ca_file = (folder.path() / "ca.pem").string();
    test::Sandbox secure("--https --ca-file-out '" + connection_settings.private_ca_file +
                         "' --fault 'step=sessions/invoices/status kind=json path=upoDownloadUrl "
                         "value=" +
                         sandbox->origin() + "/storage/01/x/invoice-upo/y count=-1'");
    settings.service.test = base::from_utf8(secure.origin());
    expect_text(send(), accepted + "*", "refused");
    EXPECT_TRUE(sandbox->requests("storage/invoice-upo").empty());
}

// Whatever a server or a firewall does at whatever step.
TEST_F(SendFaults, NothingHalfDoneWhateverHappensWherever) {
    send();
    const auto all = steps();
    constexpr const char* kinds[] = {"refuse",    "drop", "reset", "cut", "malformed",
                                     "truncated", "html", "empty", "drip"};
    for (const std::string& step : std::set(all.begin(), all.end())) {
        for (const char* kind : kinds) {
            const std::string result = send_with_fault(
                step.c_str(), {{"kind", kind}, {"count", 3}, {"bytes", 200}, {"interval_ms", 1}});
            expect_whole_or_untouched(result, step + " " + kind + ": " + result);
        }
    }
}

TEST_F(SendFaults, ADatabaseThatFailsAtAnyCallLeavesTheRowWholeOrUntouched) {
    test::FailingAt failing;
    const int calls = test::fail_each_call(failing, test::out_of_memory, [&](int call) {
        begin_anew();
        ports::SqliteDatabase real(connection);
        test::FailingDatabase database(real, failing);
        KseF_comm client(ports());
        const std::string result = send_with(client, database);
        const std::string number = row().at("numer_ksef");
        expect_whole_or_untouched(result, "call " + std::to_string(call));
        if (row().at("UPO_ksef").empty()) {
            EXPECT_EQ(result, number.empty() ? unknown : accepted + number) << call;
        }
    });
    EXPECT_GT(calls, 20) << "the whole story";
}

TEST_F(SendFaults, CryptographyThatFailsAtAnyCallHasItsText) {
    const std::pair<const char*, std::string> texts[] = {
        {"key for tokens", session_unknown},
        {"key for symmetric keys", "Load RSA Public Key failed: *"},
        {"token", session_unknown},
        {"session key", unknown},
        {"initialisation vector", unknown},
        {"loading the key", "Load RSA Public Key failed: odmowa dostępu"},
        {"wrapping the session key", "RSA Encrypt AES Key failed: odmowa dostępu"},
        {"invoice", unknown},
        {"hash", unknown},
        {"hash of the encrypted", unknown},
        {"nothing", ""},
    };
    const auto real = std::move(crypto);
    test::FailingAt failing;
    test::fail_each_call(failing, test::access_denied, [&](int call) {
        begin_anew();
        crypto = std::make_unique<test::FailingCrypto>(*real, failing);
        const std::string result = send();
        const auto& [what, text] = texts[call - 1];
        expect_text(result, text, what);
        expect_whole_or_untouched(result, what);
    });
}

TEST_F(SendFaults, NoTokenIsLeftInFreedMemory) {
    test::look_for_in_freed_memory("0123456789abcdef");
    // The tokens that the service gives are JSON Web Tokens; all of them begin so.
    test::look_for_in_freed_memory("eyJhbGciOi");
    ASSERT_EQ(send(), "");
    EXPECT_EQ(test::found_in_freed_memory(), 0);
    { const base::Text careless(token); }
    EXPECT_EQ(test::found_in_freed_memory(), 1) << "the watch sees";
}

}  // namespace
}  // namespace tavrix::ksef
