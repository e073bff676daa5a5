#pragma once

#include <fstream>
#include <sstream>

#include "base/error.h"
#include "mail/delivery.h"
#include "ports/native/adapters.h"
#include "ports/portable/curl_stream.h"
#include "ports/portable/openssl_crypto.h"
#include "tests/support/fake_clock.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::test {

/// Messages on their way out, and what Python makes of them.
class DeliveryBench {
  public:
    base::Text file(const std::string& name, const std::string& content) {
        std::ofstream(scratch.path() / name, std::ios::binary) << content;
        return base::from_utf8((scratch.path() / name).string());
    }
    /// The fields of these names, the parts, what is wrong.
    static std::string judged(const std::string& path, const std::string& fields) {
        FILE* pipe =
            popen(("python3 " TAVRIX_JUDGE " '" + path + "' " + fields + " 2>&1").c_str(), "r");
        std::string told;
        for (int c = 0; (c = std::fgetc(pipe)) != EOF;) told += static_cast<char>(c);
        pclose(pipe);
        return told;
    }
    static std::string bytes_of(mail::outgoing::OutgoingMessage& message) {
        std::string all;
        for (auto piece = message.next(); !piece.empty(); piece = message.next()) {
            all += base::chars_of(piece);
        }
        return all;
    }

    ScratchFolder scratch;
    FakeClock clock;
    ports::ConnectionSettings connection;
    std::unique_ptr<ports::DataFiles> files = ports::make_native_files({});
    std::unique_ptr<ports::Crypto> crypto = ports::make_openssl_crypto();
    mail::DeliveryPorts ports{
        {*files, *crypto, clock, [](const base::DateTime&) { return std::chrono::minutes(60); }},
        &ports::make_curl_mail_stream,
        [this] { return connection; }};
};

}  // namespace tavrix::test
