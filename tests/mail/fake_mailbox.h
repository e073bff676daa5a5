#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "ports/stream.h"
#include "tests/support/fake_clock.h"

namespace tavrix::test {

/// Whoever waits for a mailbox lets its time pass.
class MovingClock final : public FakeClock {
  public:
    base::DateTime now_local() override {
        const std::int64_t second =
            now.hour * 3600 + now.minute * 60 + now.second + slept.count() / 1000;
        const std::int64_t day = base::days_from_civil(now.year, now.month, now.day);
        base::DateTime moment = base::civil_from_days(day + second / 86'400);
        moment.hour = static_cast<int>(second % 86'400 / 3600);
        moment.minute = static_cast<int>(second % 3600 / 60);
        moment.second = static_cast<int>(second % 60);
        return moment;
    }
};

/// A POP3 server (RFC 1939) with one mailbox, and the trouble it makes.
struct FakeMailbox {
    explicit FakeMailbox(FakeClock& its_clock) : clock(its_clock) {}

    std::vector<std::string> messages;
    /// By the command's word, "" for the greeting: what is said instead of the right answer.
    std::map<std::string, std::string> answers;
    enum class AtCut { silence, end, reset };
    /// What happens behind so many bytes of a connection.
    std::size_t cut_at = std::string::npos;
    AtCut at_cut = AtCut::silence;
    std::size_t bytes_at_once = std::string::npos;
    std::chrono::milliseconds per_arrival{0};
    /// Every command of every connection, as it came.
    std::string said;
    FakeClock& clock;
};

class MailboxStream final : public ports::Stream {
  public:
    explicit MailboxStream(FakeMailbox& box) : box_(box) {}

    void connect(const ports::StreamAddress&, ports::Security) override {
        box_.said += "connect\n";
        answer("", "+OK witaj");
        open_ = true;
    }
    bool connected_within(std::chrono::milliseconds) override { return true; }
    ports::Sent send(base::ByteView bytes, std::chrono::milliseconds) override {
        line_ += base::chars_of(bytes);
        for (std::size_t end; (end = line_.find("\r\n")) != std::string::npos;) {
            obey(line_.substr(0, end));
            line_.erase(0, end + 2);
        }
        return {bytes.size(), {}};
    }
    ports::Received receive(std::chrono::milliseconds slice) override {
        if (!open_) throw ports::StreamError(10057, u"nie ma połączenia");
        const bool cut = given_ >= box_.cut_at;
        if (cut && box_.at_cut == FakeMailbox::AtCut::reset) {
            throw ports::StreamError(10054, u"zerwane");
        }
        if ((cut && box_.at_cut == FakeMailbox::AtCut::end) || (coming_.empty() && quit_)) {
            return {ports::Received::State::ended, {}, {}};
        }
        if (cut || coming_.empty()) {
            box_.clock.slept += slice;
            return {ports::Received::State::nothing_yet, {}, slice};
        }
        box_.clock.slept += box_.per_arrival;
        const std::size_t count =
            std::min({coming_.size(), box_.bytes_at_once, box_.cut_at - given_});
        const base::ByteView bytes = base::bytes_of(coming_).first(count);
        ports::Received received{ports::Received::State::data, {bytes.begin(), bytes.end()}, slice};
        coming_.erase(0, count);
        given_ += count;
        return received;
    }
    void close() noexcept override { open_ = false; }

  private:
    void obey(const std::string& command) {
        box_.said += command + "\n";
        const std::string word = command.substr(0, command.find(' '));
        if (word == "STAT") {
            answer(word, "+OK " + std::to_string(box_.messages.size()) + " 320");
        } else if (word == "RETR") {
            answer(word, "+OK " + std::to_string(box_.messages[0].size()) + " octets\r\n" +
                             box_.messages[0] + ".");
        } else {
            answer(word, "+OK");
        }
        if (word == "DELE") deleted_ = !box_.answers.contains(word);
        quit_ = quit_ || word == "QUIT";
        if (word == "QUIT" && deleted_) box_.messages.erase(box_.messages.begin());
    }
    void answer(const std::string& word, const std::string& right) {
        const auto instead = box_.answers.find(word);
        coming_ += (instead == box_.answers.end() ? right : instead->second) + "\r\n";
    }

    FakeMailbox& box_;
    std::string line_;
    std::string coming_;
    std::size_t given_ = 0;
    bool open_ = false;
    bool deleted_ = false;
    bool quit_ = false;
};

}  // namespace tavrix::test
