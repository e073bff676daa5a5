#pragma once

#include <functional>
#include <string>
#include <vector>

#include "mail/cls_socket.h"
#include "ports/portable/curl_stream.h"
#include "tests/support/code_page.h"

namespace tavrix::test {

/// Remembers every event as one line, AbortCheck apart from the rest.
class Listener final : public mail::SocketEvents {
  public:
    void BinaryData(const base::Bytes& Data) override {
        log.push_back("binary " + std::to_string(Data.size()));
    }
    void AbortCheck(bool& Abort) override {
        ++checks;
        if (on_check) on_check(Abort);
    }
    void TextData(const base::Text& Text) override {
        log.push_back("text " + base::to_utf8(Text));
        if (on_text) on_text();
    }
    void ProgressInfo(const base::Text& Name, const base::Text& Value) override {
        log.push_back(base::to_utf8(Name) + " " + base::to_utf8(Value));
        if (on_progress) on_progress(Name);
    }
    void PercentDone(std::int32_t Percent, bool& Abort) override {
        percents.push_back(Percent);
        Abort = Percent >= abort_at_percent;
    }
    void TaskCompleted(bool Success) override {
        log.push_back(Success ? "done" : "failed");
        if (on_completed) on_completed();
    }

    /// True when a line of the log begins so.
    bool has(const std::string& beginning) const {
        for (const std::string& line : log) {
            if (line.starts_with(beginning)) return true;
        }
        return false;
    }

    std::vector<std::string> log;
    std::vector<std::int32_t> percents;
    int checks = 0;
    std::function<void(bool&)> on_check;
    std::function<void()> on_text;
    std::function<void(base::TextView)> on_progress;
    std::function<void()> on_completed;
    std::int32_t abort_at_percent = 1000;
};

inline ports::ConnectionSettings settings_with(const std::string& private_ca_file = "") {
    ports::ConnectionSettings settings;
    settings.proxy = "direct";
    settings.private_ca_file = private_ca_file;
    return settings;
}

/// A socket with its surroundings.
struct Bench {
    explicit Bench(ports::ConnectionSettings with = settings_with())
        : settings(std::move(with)),
          socket({ports::make_curl_stream(settings), *code_page, settings, listener}) {}
    explicit Bench(std::unique_ptr<ports::Stream> stream)
        : settings(settings_with()), socket({std::move(stream), *code_page, settings, listener}) {}

    Listener listener;
    std::unique_ptr<ports::CodePage> code_page = system_code_page();
    ports::ConnectionSettings settings;
    mail::clsSocket socket;
};

}  // namespace tavrix::test
