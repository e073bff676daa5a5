// What the socket makes of time, of a host that stops it, and of calls in the middle of its own:
// through a stream that does what it is told.

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <new>

#include "base/error.h"
#include "tests/mail/socket_bench.h"
#include "tests/support/failing.h"

namespace tavrix::test {
namespace {

using ports::Received;
using std::chrono::milliseconds;
using Lines = std::vector<std::string>;

/// Time passes as fast as the test: each slice is over at once.
class ScriptedStream final : public ports::Stream {
  public:
    struct State {
        bool open = false;
        int slices_until_connected = 0;
        std::deque<std::string> arriving;
        /// Breaks behind what is arriving, instead of falling silent.
        bool breaks = false;
        /// How long each of them takes, and each sending; a slice at most.
        milliseconds pace{0};
        std::size_t takes_at_once = std::string::npos;
        int slices_until_writable = 0;
        std::size_t sent = 0;
        milliseconds waited{0};
    };
    explicit ScriptedStream(State& state) : state_(state) {}

    void connect(const ports::StreamAddress&, bool) override { state_.open = true; }
    bool connected_within(milliseconds slice) override {
        require_open();
        if (state_.slices_until_connected-- <= 0) return true;
        state_.waited += slice;
        return false;
    }
    ports::Sent send(base::ByteView bytes, milliseconds slice) override {
        require_open();
        if (state_.slices_until_writable-- > 0) {
            state_.waited += slice;
            return {0, slice};
        }
        const std::size_t count = std::min(bytes.size(), state_.takes_at_once);
        state_.sent += count;
        return {count, std::min(state_.pace, slice)};
    }
    Received receive(milliseconds slice) override {
        require_open();
        Received received;
        received.waited = slice;
        if (!state_.arriving.empty()) {
            const base::ByteView bytes = base::bytes_of(state_.arriving.front());
            received.state = Received::State::data;
            received.bytes.assign(bytes.begin(), bytes.end());
            received.waited = std::min(state_.pace, slice);
            state_.arriving.pop_front();
        } else if (state_.breaks) {
            state_.open = false;
            throw base::AutomationError(base::ErrorNumber::component_failed, u"test", u"zerwane");
        }
        state_.waited += std::chrono::duration_cast<milliseconds>(received.waited);
        return received;
    }
    void close() noexcept override { state_.open = false; }

  private:
    void require_open() const {
        if (!state_.open) {
            throw base::AutomationError(base::ErrorNumber::component_failed, u"test", u"zamknięty");
        }
    }
    State& state_;
};

class SocketWaits : public testing::Test {
  protected:
    ScriptedStream::State stream;
    Bench bench{std::make_unique<ScriptedStream>(stream)};
    Listener& listener = bench.listener;

    std::int32_t open(std::int32_t wait_ms) {
        return bench.socket.OpeneSocket(0, wait_ms, u"host:1");
    }
};

TEST_F(SocketWaits, TheSettingsGiveTheTimeOutsWhenTheHostDoesNot) {
    bench.settings.connect_timeout = milliseconds(700);
    bench.settings.no_progress_timeout = milliseconds(1500);
    stream.slices_until_connected = 8;
    EXPECT_EQ(open(0), 0);
    EXPECT_EQ(stream.waited, milliseconds(700));
    stream.slices_until_connected = 8;
    EXPECT_EQ(open(900), 1);
    stream.slices_until_connected = 0;
    ASSERT_EQ(open(-1), 1);
    stream.waited = {};
    EXPECT_EQ(bench.socket.ReceiveString(), u"");
    EXPECT_EQ(stream.waited, milliseconds(1500));
    stream.waited = {};
    stream.slices_until_writable = 100;
    bench.socket.SendString(u"x");
    EXPECT_EQ(stream.waited, milliseconds(1500));
}

TEST_F(SocketWaits, AbortEndsEachKindOfWait) {
    listener.on_check = [&](bool& abort) { abort = listener.checks == 3; };
    stream.slices_until_connected = 100;
    EXPECT_EQ(open(60'000), 0);
    EXPECT_EQ(stream.waited, milliseconds(300));
    EXPECT_FALSE(stream.open);

    stream.slices_until_connected = 0;
    ASSERT_EQ(open(60'000), 1);
    listener.checks = 0;
    stream.waited = {};
    EXPECT_EQ(bench.socket.ReceiveString(), u"");
    EXPECT_EQ(stream.waited, milliseconds(300));
    EXPECT_TRUE(stream.open) << "nothing is lost when nothing came";

    listener.checks = 0;
    stream.slices_until_writable = 100;
    bench.socket.SendString(u"x");
    EXPECT_EQ(listener.checks, 3);
    EXPECT_FALSE(stream.open);
    EXPECT_EQ(std::count(listener.log.begin(), listener.log.end(), "Błąd Przerwano."), 3);
}

TEST_F(SocketWaits, PercentDoneStopsALongText) {
    ASSERT_EQ(open(1000), 1);
    listener.abort_at_percent = 50;
    bench.socket.SendString(base::Text(4 * 65'536, u'x'));
    EXPECT_EQ(listener.percents, (std::vector<std::int32_t>{25, 50}));
    EXPECT_EQ(stream.sent, 2u * 65'536);
    EXPECT_FALSE(stream.open);
}

TEST_F(SocketWaits, ADripDoesNotOutlastTheTimeOutOrTheHostsPatience) {
    ASSERT_EQ(open(1000), 1);
    stream.arriving = {"ab", "cd"};
    stream.pace = milliseconds(19);
    EXPECT_EQ(bench.socket.ReceiveString(), u"abcd") << "pieces that follow each other";
    listener.checks = 0;
    stream.arriving.assign(1000, "x");
    stream.pace = milliseconds(10);
    EXPECT_EQ(bench.socket.ReceiveString().size(), 100u);
    EXPECT_EQ(listener.checks, 10);
    listener.on_check = [](bool& abort) { abort = true; };
    EXPECT_EQ(bench.socket.ReceiveString().size(), 10u) << "what came is the host's";
}

TEST_F(SocketWaits, HandlersMayCloseWherever) {
    for (const base::TextView at : {u"Zamknięto", u"Łączenie", u"Połączono"}) {
        ASSERT_EQ(open(1000), 1);
        listener.log.clear();
        listener.on_progress = [&](base::TextView name) {
            if (name == at) bench.socket.CloseSocket();
        };
        EXPECT_EQ(open(1000), 0) << base::to_utf8(at);
        EXPECT_TRUE(listener.has("Błąd Przerwano.")) << base::to_utf8(at);
        EXPECT_EQ(listener.log.back(), "failed");
        EXPECT_FALSE(stream.open);
        listener.on_progress = {};
    }
    listener.on_check = [&](bool&) { bench.socket.CloseSocket(); };
    stream.slices_until_connected = 5;
    EXPECT_EQ(open(1000), 0) << "in the middle of a wait";
    stream.slices_until_connected = 0;
    ASSERT_EQ(open(1000), 1);
    EXPECT_EQ(bench.socket.ReceiveString(), u"");
    EXPECT_EQ(listener.checks, 2);
    EXPECT_EQ(listener.log.back(), "failed");
}

TEST_F(SocketWaits, ClosingWhenAMethodIsDoneTellsNoEndOfItsOwn) {
    ASSERT_EQ(open(1000), 1);
    listener.log.clear();
    listener.on_completed = [&] { bench.socket.CloseSocket(); };
    bench.socket.SendString(u"x");
    EXPECT_EQ(listener.log, (Lines{"Wysłano 1", "done", "Zamknięto host:1"}));
    listener.log.clear();
    bench.socket.CloseSocket();
    EXPECT_EQ(listener.log, Lines{"done"});
    listener.on_completed = {};
    bench.socket.CloseSocket();
    EXPECT_EQ(listener.log, (Lines{"done", "done"}));
}

TEST_F(SocketWaits, WhatCameBeforeABreakIsGivenAndTheReasonNext) {
    ASSERT_EQ(open(1000), 1);
    listener.log.clear();
    stream.arriving = {"ab"};
    stream.breaks = true;
    EXPECT_EQ(bench.socket.ReceiveString(), u"ab");
    EXPECT_EQ(bench.socket.ReceiveString(), u"");
    bench.socket.SendString(u"x");
    EXPECT_EQ(listener.log,
              (Lines{"Odebrano 2", "Zamknięto host:1", "binary 2", "text ab", "done",
                     "Błąd zerwane", "failed", "Błąd Połączenie nie jest otwarte.", "failed"}));
    ASSERT_EQ(open(1000), 1);
    listener.log.clear();
    EXPECT_EQ(bench.socket.ReceiveString(), u"");
    EXPECT_EQ(listener.log, (Lines{"Błąd zerwane", "Zamknięto host:1", "failed"}));
}

/// Has no memory for a text that came.
class ExhaustedCodePage final : public ports::CodePage {
  public:
    std::optional<std::uint8_t> byte_of(char16_t) const override { return {}; }
    base::Bytes to_bytes(base::TextView text) const override { return base::Bytes(text.size()); }
    base::Text to_text(base::ByteView) const override { throw std::bad_alloc(); }
};

TEST_F(SocketWaits, NoTextStartsInTheMiddleBecauseAnEarlierOneWasLost) {
    const ExhaustedCodePage code_page;
    mail::clsSocket socket(
        {std::make_unique<ScriptedStream>(stream), code_page, bench.settings, listener});
    ASSERT_EQ(socket.OpeneSocket(0, 1000, u"host:1"), 1);
    stream.arriving = {"ab"};
    EXPECT_EQ(socket.ReceiveString(), u"");
    EXPECT_FALSE(stream.open);
    EXPECT_TRUE(listener.has("Zamknięto"));
    EXPECT_FALSE(listener.has("binary"));
    EXPECT_EQ(listener.log.back(), "failed");
}

TEST_F(SocketWaits, SendingThatMovesSlowlyCanBeAborted) {
    ASSERT_EQ(open(50), 1);
    stream.takes_at_once = 1;
    stream.pace = milliseconds(10);
    bench.socket.SendString(base::Text(100, u'x'));
    EXPECT_EQ(stream.sent, 100u) << "the time-out begins anew with each that is taken";
    EXPECT_EQ(listener.checks, 10);
    listener.on_check = [](bool& abort) { abort = true; };
    bench.socket.SendString(base::Text(100, u'x'));
    EXPECT_EQ(stream.sent, 110u);
    EXPECT_FALSE(stream.open);
}

TEST_F(SocketWaits, OtherCallsInTheMiddleOfAWaitFail) {
    ASSERT_EQ(open(300), 1);
    listener.on_check = [&](bool&) {
        EXPECT_EQ(bench.socket.OpeneSocket(0, 300, u"other:1"), 0);
        EXPECT_EQ(bench.socket.ReceiveString(), u"");
        bench.socket.SendString(u"x");
    };
    EXPECT_EQ(bench.socket.ReceiveString(), u"");
    EXPECT_EQ(stream.sent, 0u);
    EXPECT_TRUE(stream.open);
}

TEST_F(SocketWaits, HandlersMayAnswerWhatCame) {
    ASSERT_EQ(open(300), 1);
    stream.arriving = {"pytanie"};
    listener.on_text = [&] { bench.socket.SendString(u"odpowiedź"); };
    EXPECT_EQ(bench.socket.ReceiveString(), u"pytanie");
    EXPECT_EQ(stream.sent, 9u);
}

TEST_F(SocketWaits, AStreamThatFailsAtAnyCallEndsTheMethodAndNothingElse) {
    FailingAt failing;
    ScriptedStream real(stream);
    Bench failing_bench(std::make_unique<FailingStream>(real, failing));
    mail::clsSocket& socket = failing_bench.socket;
    for (const auto failure : {access_denied, out_of_memory}) {
        const int calls = fail_each_call(failing, failure, [&](int call) {
            failing_bench.listener.log.clear();
            stream.arriving = {"ab"};
            const bool opened = socket.OpeneSocket(0, 1000, u"host:1") == 1;
            socket.SendString(u"x");
            const bool received = socket.ReceiveString() == u"ab";
            // After its first byte a text is complete with the next silence, or with a failure.
            EXPECT_EQ(opened, call > 2) << call;
            EXPECT_EQ(received, call > 4 && !(call == 5 && failure == out_of_memory)) << call;
            EXPECT_EQ(failing_bench.listener.has("failed"), call < 5 || !received) << call;
            socket.CloseSocket();
            EXPECT_FALSE(stream.open) << call;
        });
        EXPECT_EQ(calls, 5) << "connect, wait, send, receive, look for more";
    }
}

}  // namespace
}  // namespace tavrix::test
