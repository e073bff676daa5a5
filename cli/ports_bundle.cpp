#include "cli/ports_bundle.h"

#include <CLI/CLI.hpp>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>

#include "frame/settings_file.h"
#include "ports/native/adapters.h"
#include "ports/portable/curl_http.h"
#include "ports/portable/openssl_crypto.h"
#include "ports/portable/openssl_signing.h"

namespace tavrix::cli {
namespace {

// Says on stderr what it waits for: KSeF may take minutes, and silence looks like a hang.
class TalkingClock final : public ports::Clock {
  public:
    base::DateTime now_local() override { return clock_->now_local(); }
    std::chrono::milliseconds steady_now() override { return clock_->steady_now(); }
    void sleep(std::chrono::milliseconds duration) override {
        std::cerr << "Czekam na KSeF " << duration.count() / 1000 << " s...\n";
        clock_->sleep(duration);
    }

  private:
    std::unique_ptr<ports::Clock> clock_ = ports::make_native_clock();
};

frame::Settings settings_of_environment() {
    const char* file = std::getenv("TAVRIX_SETTINGS");
    return file == nullptr ? frame::Settings{} : frame::load_settings(file);
}

base::Text folder_of_settings() {
    const char* file = std::getenv("TAVRIX_SETTINGS");
    if (file == nullptr) return {};
    const std::string path(file);
    const std::size_t name = path.rfind('/') + 1;
    return base::from_utf8(name == 0 ? "./" : path.substr(0, name));
}

}  // namespace

PortsBundle::PortsBundle()
    : settings_(settings_of_environment()),
      crypto_(ports::make_openssl_crypto()),
      signing_(ports::make_openssl_signing()),
      clock_(std::make_unique<TalkingClock>()),
      locale_(ports::make_native_locale()),
      xml_(ports::make_native_xml()),
      code_page_(ports::make_native_code_page()),
      files_(ports::make_native_files({})),
      file_store_(ports::make_native_file_store("")) {}

ksef::KsefPorts PortsBundle::for_ksef() {
    return {[this] { return ports::make_curl_http(settings_.connection); },
            *crypto_,
            *clock_,
            *locale_,
            *xml_,
            *code_page_,
            *files_,
            settings_.ksef,
            {},
            folder_of_settings()};
}

mail::MessagePorts PortsBundle::for_messages() {
    return {*file_store_, *clock_, *code_page_,
            no_trace_,    {},      [this] { return settings_.mail.profile; }};
}

base::Bytes read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    base::Bytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open() || file.bad()) throw CLI::ValidationError(path, "nie można odczytać pliku");
    return bytes;
}

}  // namespace tavrix::cli
