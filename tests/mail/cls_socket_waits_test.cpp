// What the socket makes of time, of a host that stops it, and of calls in the middle of its own:
// through a stream that does what it is told.

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

#include "base/error.h"
#include "tests/mail/socket_bench.h"
#include "tests/support/failing.h"

namespace tavrix::test {
namespace {

using ports::Received;
using std::chrono::milliseconds;

/// What the stream does. Time passes as fast as the test: each slice is over at once.
struct Script {
    bool open = false;
    int slices_until_connected = 0;
    int slices_until_writable = 0;
    std::deque<std::string> arriving;
    /// Breaks behind what is arriving, instead of falling silent.
    bool breaks = false;
    /// How long each arrival and each sending takes; a slice at most.
    milliseconds pace{0};
    std::size_t takes_at_once = std::string::npos;
    std::size_t sent = 0;
    milliseconds waited{0};
    /// Of every call but the closing.
    FailingAt failing;
};

class ScriptedStream final : public ports::Stream {
  public:
    explicit ScriptedStream(Script& script) : script_(script) {}

    void connect(const ports::StreamAddress&, ports::Security) override {
        script_.failing.count();
        script_.open = true;
    }
    bool connected_within(milliseconds slice) override {
        return !waits(script_.slices_until_connected, slice);
    }
    ports::Sent send(base::ByteView bytes, milliseconds slice) override {
        if (waits(script_.slices_until_writable, slice)) return {0, slice};
        const std::size_t count = std::min(bytes.size(), script_.takes_at_once);
        script_.sent += count;
        return {count, std::min(script_.pace, slice)};
    }
    Received receive(milliseconds slice) override {
        int slices = script_.arriving.empty() ? 1 : 0;
        if (waits(slices, slice)) {
            if (!script_.breaks) return {Received::State::nothing_yet, {}, slice};
            close();
            access_denied();
        }
        const base::ByteView bytes = base::bytes_of(script_.arriving.front());
        Received received{Received::State::data, {bytes.begin(), bytes.end()}, script_.pace};
        script_.arriving.pop_front();
        return received;
    }
    void close() noexcept override { script_.open = false; }

  private:
    bool waits(int& slices, milliseconds slice) {
        script_.failing.count();
        if (!script_.open) access_denied();
        if (slices-- <= 0) return false;
        script_.waited += slice;
        return true;
    }

    Script& script_;
};

class SocketWaits : public testing::Test {
  protected:
    Script stream;
    Bench bench{settings_with(""), std::make_unique<ScriptedStream>(stream)};
    mail::clsSocket& socket = bench.socket;
    Listener& listener = bench.listener;

    std::int32_t open(std::int32_t wait_ms) { return socket.OpeneSocket(0, wait_ms, u"host:1"); }
    milliseconds waited() { return std::exchange(stream.waited, milliseconds(0)); }
};

TEST_F(SocketWaits, TheSettingsGiveTheTimeOutsWhenTheHostDoesNot) {
    bench.settings.connect_timeout = milliseconds(700);
    bench.settings.no_progress_timeout = milliseconds(1500);
    stream.slices_until_connected = 8;
    EXPECT_EQ(open(0), 0);
    EXPECT_EQ(waited(), milliseconds(700));
    stream.slices_until_connected = 8;
    EXPECT_EQ(open(900), 1);
    stream.slices_until_connected = 0;
    ASSERT_EQ(open(-1), 1);
    waited();
    EXPECT_EQ(socket.ReceiveString(), u"");
    EXPECT_EQ(waited(), milliseconds(1500));
    stream.slices_until_writable = 100;
    socket.SendString(u"x");
    EXPECT_EQ(waited(), milliseconds(1500));
}

TEST_F(SocketWaits, AbortEndsEachKindOfWait) {
    listener.abort_at_check = 3;
    stream.slices_until_connected = 100;
    EXPECT_EQ(open(60'000), 0);
    EXPECT_EQ(waited(), milliseconds(300));
    EXPECT_FALSE(stream.open);

    stream.slices_until_connected = 0;
    ASSERT_EQ(open(60'000), 1);
    listener.checks = 0;
    EXPECT_EQ(socket.ReceiveString(), u"");
    EXPECT_EQ(waited(), milliseconds(300));
    EXPECT_TRUE(stream.open) << "nothing is lost when nothing came";

    listener.checks = 0;
    stream.slices_until_writable = 100;
    socket.SendString(u"x");
    EXPECT_EQ(waited(), milliseconds(300));
    EXPECT_FALSE(stream.open);
    EXPECT_EQ(std::ranges::count(listener.log, "Błąd Przerwano."), 3);
}

TEST_F(SocketWaits, ALongTextGoesInPiecesUntilTheHostStopsIt) {
    ASSERT_EQ(open(1000), 1);
    listener.abort_at_percent = 50;
    socket.SendString(base::Text(4 * 65'536, u'x'));
    EXPECT_EQ(listener.percents, (std::vector<std::int32_t>{25, 50}));
    EXPECT_EQ(stream.sent, 2u * 65'536);
    EXPECT_FALSE(stream.open);

    // A hundred times this size is more than 32 bits hold.
    ASSERT_EQ(open(1000), 1);
    socket.SendString(base::Text(512 * 65'536, u'x'));
    EXPECT_EQ(listener.percents.back(), 50);
}

TEST_F(SocketWaits, ADripDoesNotOutlastTheTimeOutOrTheHostsPatience) {
    ASSERT_EQ(open(1000), 1);
    stream.arriving = {"ab", "cd"};
    stream.pace = milliseconds(19);
    EXPECT_EQ(socket.ReceiveString(), u"abcd") << "pieces that follow each other";
    listener.checks = 0;
    stream.arriving.assign(1000, "x");
    stream.pace = milliseconds(10);
    EXPECT_EQ(socket.ReceiveString().size(), 100u);
    EXPECT_EQ(listener.checks, 10);
    listener.abort_at_check = 11;
    EXPECT_EQ(socket.ReceiveString().size(), 10u) << "what came is the host's";

    stream.takes_at_once = 1;
    listener.checks = 0;
    socket.SendString(base::Text(200, u'x'));
    EXPECT_EQ(stream.sent, 110u) << "the time-out begins anew with each, the host's patience not";
    EXPECT_FALSE(stream.open);
}

TEST_F(SocketWaits, EndlessDataFailsAtTheLimit) {
    ASSERT_EQ(open(1000), 1);
    stream.arriving.assign(1025, std::string(64 * 1024, 'x'));
    EXPECT_EQ(socket.ReceiveString(), u"");
    EXPECT_TRUE(listener.has("Błąd Odebrano ponad 64 MiB"));
    EXPECT_FALSE(stream.open);
}

TEST_F(SocketWaits, HandlersMayCloseWherever) {
    for (const char* at : {"Zamknięto", "Łączenie", "Połączono"}) {
        ASSERT_EQ(open(1000), 1);
        listener.log.clear();
        listener.on_line = [&](const std::string& line) {
            if (line.starts_with(at)) socket.CloseSocket();
        };
        EXPECT_EQ(open(1000), 0) << at;
        EXPECT_TRUE(listener.has("Błąd Przerwano.")) << at;
        EXPECT_EQ(listener.log.back(), "failed");
        EXPECT_FALSE(stream.open);
        listener.on_line = {};
    }
    listener.on_check = [&] { socket.CloseSocket(); };
    ASSERT_EQ(open(1000), 1);
    EXPECT_EQ(socket.ReceiveString(), u"");
    EXPECT_EQ(listener.checks, 1) << "in the middle of a wait";
}

TEST_F(SocketWaits, ClosingWhenAMethodIsDoneTellsNoEndOfItsOwn) {
    ASSERT_EQ(open(1000), 1);
    listener.log.clear();
    listener.on_line = [&](const std::string& line) {
        if (line == "done") socket.CloseSocket();
    };
    socket.SendString(u"x");
    EXPECT_EQ(listener.log, (Lines{"Wysłano 1", "done", "Zamknięto host:1"}));
}

TEST_F(SocketWaits, WhatCameBeforeABreakIsGivenAndTheReasonNext) {
    ASSERT_EQ(open(1000), 1);
    listener.log.clear();
    stream.arriving = {"ab"};
    stream.breaks = true;
    EXPECT_EQ(socket.ReceiveString(), u"ab");
    EXPECT_EQ(socket.ReceiveString(), u"");
    socket.SendString(u"x");
    EXPECT_EQ(listener.log, (Lines{"Odebrano 2", "Zamknięto host:1", "binary 2", "text ab", "done",
                                   "Błąd odmowa dostępu", "failed",
                                   "Błąd Połączenie nie jest otwarte.", "failed"}));
}

TEST_F(SocketWaits, OnlyTheHandlersOfWhatCameMayCallOtherMethods) {
    ASSERT_EQ(open(300), 1);
    listener.on_check = [&] {
        EXPECT_EQ(socket.OpeneSocket(0, 300, u"other:1"), 0);
        EXPECT_EQ(socket.ReceiveString(), u"");
        socket.SendString(u"x");
    };
    EXPECT_EQ(socket.ReceiveString(), u"");
    EXPECT_EQ(stream.sent, 0u);
    EXPECT_TRUE(stream.open);
    listener.on_check = {};
    stream.arriving = {"pytanie"};
    listener.on_line = [&](const std::string& line) {
        if (line == "text pytanie") socket.SendString(u"odpowiedź");
    };
    EXPECT_EQ(socket.ReceiveString(), u"pytanie");
    EXPECT_EQ(stream.sent, 9u);
}

TEST_F(SocketWaits, AStreamThatFailsAtAnyCallEndsTheMethodAndNothingElse) {
    const int calls = fail_each_call(stream.failing, access_denied, [&](int call) {
        listener.log.clear();
        stream.arriving = {"ab"};
        EXPECT_EQ(open(1000) == 1, call > 2) << call;
        socket.SendString(u"x");
        socket.ReceiveString();
        // After its first byte a text is complete with the next silence, or with a failure.
        EXPECT_EQ(listener.has("Błąd odmowa"), call < 5) << call;
        socket.CloseSocket();
        EXPECT_FALSE(stream.open) << call;
    });
    EXPECT_EQ(calls, 5) << "connect, wait, send, receive, look for more";
}

}  // namespace
}  // namespace tavrix::test
