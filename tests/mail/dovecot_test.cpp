// Fetching from a real server: messages made by Python's mail library, and read by it as the judge.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "base/base64.h"
#include "mail/cls_get_mail.h"
#include "ports/portable/curl_stream.h"
#include "tests/mail/dovecot.h"
#include "tests/mail/reading_bench.h"
#include "tests/mail/socket_bench.h"

namespace tavrix::test {
namespace {

using Json = nlohmann::json;
using ports::Security;

Json make_messages(const Dovecot& dovecot) {
    std::FILE* pipe =
        popen(("python3 " TAVRIX_MAKE_MESSAGES " '" + dovecot.new_mail() + "'").c_str(), "r");
    std::string text;
    for (int c = 0; (c = std::fgetc(pipe)) != EOF;) text += static_cast<char>(c);
    if (pclose(pipe) != 0) throw std::runtime_error("make_messages.py");
    dovecot.deliver();
    return Json::parse(text);
}

struct Fetching {
    Fetching(const Dovecot& dovecot, Security security) : certificate(dovecot.certificate()) {
        settings.host = u"127.0.0.1";
        settings.port = security == Security::tls ? dovecot.tls_port() : dovecot.port();
        settings.user = u"jan";
        settings.security = security;
        settings.delete_stored = true;
        settings.folder = reading.folder();
    }
    std::int32_t run(base::TextView password = u"tajne") {
        settings.password = base::SecretText(password);
        mail::Retrieval retrieval(
            mail::RetrievalForm::manager, settings,
            {ports::make_curl_mail_stream(settings_with(certificate)), *clock, trace,
             *reading.code_page,
             [this] { return std::make_shared<mail::CMessage>(reading.message()); },
             std::chrono::milliseconds(0)});
        while (retrieval.go_on(std::chrono::milliseconds(100))) {
        }
        failure = base::to_utf8(retrieval.failure());
        message = retrieval.message();
        return retrieval.run_result();
    }

    std::string certificate;
    ReadingBench reading;
    std::unique_ptr<ports::Clock> clock = ports::make_native_clock();
    ports::NoTrace trace;
    mail::RetrievalSettings settings;
    std::shared_ptr<mail::CMessage> message;
    std::string failure;
};

Json described(const mail::CMessage& message, const ReadingBench& reading) {
    Json files = Json::object();
    for (const auto& [name, content] : reading.files()) {
        files[name.substr(3)] = base::base64_encode(base::bytes_of(content));
    }
    return {{"subject", base::to_utf8(message.text<mail::MessageProperty::Subject>())},
            {"text", base::to_utf8(message.text<mail::MessageProperty::MessageText>())},
            {"files", files}};
}

TEST(DovecotTest, BringsWhatPythonHasSent) {
    if (!Dovecot::is_installed()) GTEST_SKIP() << "dovecot-pop3d is not installed";
    const Dovecot dovecot;
    for (const Security security : {Security::none, Security::tls, Security::tls_after_stls}) {
        const Json expected = make_messages(dovecot);
        ASSERT_EQ(dovecot.count(), expected.size());
        for (const Json& description : expected) {
            Fetching fetching(dovecot, security);
            ASSERT_EQ(fetching.run(), 1) << fetching.failure;
            EXPECT_EQ(described(*fetching.message, fetching.reading), description);
        }
        EXPECT_EQ(dovecot.count(), 0u);
        EXPECT_EQ(Fetching(dovecot, security).run(), 0);
    }
}

TEST(DovecotTest, RefusesAndIsRefused) {
    if (!Dovecot::is_installed()) GTEST_SKIP() << "dovecot-pop3d is not installed";
    const Dovecot dovecot;
    make_messages(dovecot);
    Fetching fetching(dovecot, Security::tls_after_stls);
    EXPECT_EQ(fetching.run(u"nie to"), -1);
    EXPECT_NE(fetching.failure.find("Serwer odrzucił nazwę użytkownika lub hasło. -ERR [AUTH]"),
              std::string::npos)
        << fetching.failure;
    // By a name that the certificate does not have, and without its authority.
    for (const Security security : {Security::tls, Security::tls_after_stls}) {
        Fetching other(dovecot, security);
        other.settings.host = u"127.0.0.2";
        other.certificate.clear();
        EXPECT_LT(other.run(), -10'000);
        other.settings.host = u"127.0.0.1";
        EXPECT_EQ(other.run(), -10'053);
        EXPECT_NE(other.failure.find("http.private_ca_file"), std::string::npos) << other.failure;
    }
    EXPECT_EQ(dovecot.count(), 3u);
}

}  // namespace
}  // namespace tavrix::test
