#include "cli/ports_bundle.h"

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <iterator>

#include "base/path.h"
#include "cli/system_ports.h"
#include "console/console.h"
#include "frame/settings_file.h"
#include "ports/native/adapters.h"
#include "ports/portable/curl_http.h"
#include "ports/portable/curl_stream.h"
#include "ports/portable/openssl_crypto.h"
#include "ports/portable/openssl_signing.h"
#include "ports/portable/time_zone.h"

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
    std::unique_ptr<ports::Clock> clock_ = make_clock();
};

frame::Settings settings_of_environment() {
    const char* file = console::variable("TAVRIX_SETTINGS");
    return file == nullptr ? frame::Settings{} : frame::load_settings(file);
}

base::Text folder_of_settings() {
    const char* file = console::variable("TAVRIX_SETTINGS");
    if (file == nullptr) return {};
    const std::string path(file);
    const std::size_t name = path.find_last_of("/\\") + 1;
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
      code_page_(make_code_page()),
      files_(make_files({})),
      text_files_(make_text_files()),
      xml_documents_(ports::make_native_xml_documents()),
      file_store_(make_file_store()),
      traced_drive_(make_files(settings_.trace_root)),
      trace_(trace_switch_, {*traced_drive_, *clock_, *locale_, *code_page_}) {}

ksef::KsefPorts PortsBundle::for_ksef() {
    return {[this] { return ports::make_curl_http(settings_.connection); },
            *crypto_,
            *clock_,
            *locale_,
            *xml_,
            *code_page_,
            *files_,
            *text_files_,
            *xml_documents_,
            settings_.ksef,
            {},
            folder_of_settings(),
            {},
            [](base::TextView text) { std::cerr << base::to_utf8(text) << '\n'; }};
}

mail::MessagePorts PortsBundle::for_messages() {
    return {*file_store_, *clock_, *code_page_,
            trace_,       {},      [this] { return settings_.mail.profile; }};
}

mail::DeliveryPorts PortsBundle::for_delivery() {
    return {{*files_, *crypto_, *clock_, &ports::utc_offset_at},
            &ports::make_curl_mail_stream,
            [this] { return settings_.connection; }};
}

mail::RetrievalPorts PortsBundle::for_retrieval() {
    // Who reads a terminal or a log has the failure in front of him.
    constexpr std::chrono::milliseconds failure_shown_for{0};
    return {ports::make_curl_mail_stream(settings_.connection),
            *clock_,
            trace_,
            *code_page_,
            [this] { return std::make_shared<mail::CMessage>(for_messages()); },
            failure_shown_for};
}

base::Bytes read_file(const std::string& path) {
    std::ifstream file(base::path_of(path), std::ios::binary);
    base::Bytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open() || file.bad()) throw CLI::ValidationError(path, "nie można odczytać pliku");
    return bytes;
}

}  // namespace tavrix::cli
