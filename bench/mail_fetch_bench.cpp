// Fetching 200 messages from a real Dovecot, one connection for each, beside curl, which is started
// once for each message.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "mail/pop3/retrieval.h"
#include "ports/native/adapters.h"
#include "ports/portable/curl_stream.h"
#include "tests/mail/dovecot.h"

namespace {

using namespace tavrix;

constexpr int message_count = 200;

double seconds_since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// 20 KB each, with an attachment.
void put_messages(const test::Dovecot& dovecot) {
    for (int i = 0; i < message_count; ++i) {
        std::ofstream file(dovecot.new_mail() + "/" + std::to_string(1000 + i) + ".M1.host");
        file << "Subject: " << i
             << "\r\nContent-Type: multipart/mixed; boundary=\"b\"\r\n\r\n--b\r\n"
                "Content-Type: text/plain\r\n\r\ntekst\r\n--b\r\nContent-Type: application/pdf; "
                "name=\"FV"
             << i << ".pdf\"\r\nContent-Transfer-Encoding: base64\r\n\r\n";
        for (int line = 0; line < 250; ++line) file << std::string(76, 'A') << "\r\n";
        file << "--b--\r\n";
    }
    dovecot.deliver();
}

double fetch_by_curl(const test::Dovecot& dovecot) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 1; i <= message_count; ++i) {
        const std::string command =
            "curl -s -o /dev/null -u jan:tajne pop3://127.0.0.1:" + std::to_string(dovecot.port()) +
            "/" + std::to_string(i);
        if (std::system(command.c_str()) != 0) std::abort();
    }
    return seconds_since(start);
}

double fetch_by_tavrix(const test::Dovecot& dovecot) {
    const test::ScratchFolder folder;
    const auto clock = ports::make_native_clock();
    const auto code_page = ports::make_native_code_page();
    const auto store = ports::make_native_file_store("");
    ports::NoTrace trace;
    mail::RetrievalSettings settings;
    settings.host = u"127.0.0.1";
    settings.port = dovecot.port();
    settings.user = u"jan";
    settings.folder = base::from_utf8(folder.path().string()) + u"\\";
    const auto start = std::chrono::steady_clock::now();
    for (int i = 1; i <= message_count; ++i) {
        settings.password = base::SecretText(u"tajne");
        settings.message_number = i;
        mail::Retrieval retrieval(
            mail::RetrievalForm::manager, settings,
            {ports::make_curl_mail_stream({}), *clock, trace, *code_page, [&] {
                 return std::make_shared<mail::CMessage>(
                     mail::MessagePorts{*store, *clock, *code_page, trace});
             }});
        while (retrieval.go_on(std::chrono::milliseconds(100))) {
        }
        if (retrieval.run_result() != mail::run_result::stored) std::abort();
    }
    return seconds_since(start);
}

}  // namespace

int main() {
    if (!test::Dovecot::is_installed()) {
        std::puts("fetching mail: not measured, dovecot-pop3d is not installed");
        return 0;
    }
    const test::Dovecot dovecot;
    put_messages(dovecot);
    const double curl = fetch_by_curl(dovecot);
    const double tavrix = fetch_by_tavrix(dovecot);
    std::printf(
        "fetching %d messages: %.0f messages/s, files saved; curl %.0f messages/s, nothing "
        "saved; ratio %.2f\n",
        message_count, message_count / tavrix, message_count / curl, curl / tavrix);
    return 0;
}
