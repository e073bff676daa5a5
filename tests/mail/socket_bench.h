#pragma once

#include <functional>
#include <string>
#include <vector>

#include "mail/cls_socket.h"
#include "ports/portable/curl_stream.h"
#include "tests/support/code_page.h"

namespace tavrix::test {

using Lines = std::vector<std::string>;

/// Remembers every event as one line, AbortCheck and PercentDone apart from the rest.
class Listener final : public mail::SocketEvents {
  public:
    void BinaryData(const base::Bytes& Data) override {
        tell("binary " + std::to_string(Data.size()));
    }
    void AbortCheck(bool& Abort) override {
        ++checks;
        if (on_check) on_check();
        Abort = checks == abort_at_check;
    }
    void TextData(const base::Text& Text) override { tell("text " + base::to_utf8(Text)); }
    void ProgressInfo(const base::Text& Name, const base::Text& Value) override {
        tell(base::to_utf8(Name) + " " + base::to_utf8(Value));
    }
    void PercentDone(std::int32_t Percent, bool& Abort) override {
        percents.push_back(Percent);
        Abort = Percent >= abort_at_percent;
    }
    void TaskCompleted(bool Success) override { tell(Success ? "done" : "failed"); }

    /// True when a line of the log begins so.
    bool has(const std::string& beginning) const {
        for (const std::string& line : log) {
            if (line.starts_with(beginning)) return true;
        }
        return false;
    }

    Lines log;
    std::vector<std::int32_t> percents;
    int checks = 0;
    int abort_at_check = -1;
    std::int32_t abort_at_percent = 1000;
    /// What the host does meanwhile; of a line, when it is told.
    std::function<void()> on_check;
    std::function<void(const std::string&)> on_line;

  private:
    void tell(const std::string& line) {
        log.push_back(line);
        if (on_line) on_line(line);
    }
};

inline ports::ConnectionSettings settings_with(const std::string& private_ca_file,
                                               const std::string& proxy = "direct") {
    ports::ConnectionSettings settings;
    settings.proxy = proxy;
    settings.private_ca_file = private_ca_file;
    return settings;
}

/// A socket with its surroundings; without a stream of the test's own it is a real one.
struct Bench {
    explicit Bench(ports::ConnectionSettings with = settings_with(""),
                   std::unique_ptr<ports::Stream> stream = nullptr)
        : settings(std::move(with)),
          socket({stream ? std::move(stream) : ports::make_curl_stream(settings), *code_page,
                  settings, listener}) {}

    Listener listener;
    std::unique_ptr<ports::CodePage> code_page = system_code_page();
    ports::ConnectionSettings settings;
    mail::clsSocket socket;
};

}  // namespace tavrix::test
