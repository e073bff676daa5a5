// Tavrix.clsSocket as a host with events uses it, against a server in this program.

#include <algorithm>

#include "com/codec.h"
#include "com/guid.h"
#include "tests/com/event_sink.h"
#include "tests/ports/loopback_server.h"

namespace tavrix::test {
namespace {

constexpr GUID socket_events = com::guid("D7EFD24E-AC81-4DBF-A0D9-CD71DFC3386D");

enum EventId : DISPID {
    binary_data = 1,
    abort_check,
    text_data,
    progress_info,
    percent_done,
    task_completed,
};

class ClsSocket : public testing::Test {
  protected:
    ComPointer<IDispatch> socket = create(u"Tavrix.clsSocket");

    /// As VB passes its variables.
    LONG open(const base::Text& address, LONG wait_ms, LONG tls = 0) {
        const Variant text(address);
        BSTR variable = text.get().bstrVal;
        const Outcome outcome =
            call(socket, u"OpeneSocket",
                 {by_reference(&tls), by_reference(&wait_ms), by_reference(&variable)});
        EXPECT_EQ(outcome.code, S_OK);
        EXPECT_EQ(outcome.result.type(), VT_I4);
        return outcome.result.get().lVal;
    }
    void send(const base::Text& text) {
        Variant variable(text);
        const Outcome outcome = call(socket, u"SendString", {by_reference(variable.address())});
        EXPECT_EQ(outcome.code, S_OK);
        EXPECT_EQ(outcome.result.type(), VT_EMPTY);
    }
    base::Text receive() { return bstr_of(call(socket, u"ReceiveString").result); }
};

base::Text text_of(const VARIANT& argument) {
    EXPECT_EQ(argument.vt, VT_BSTR);
    return base::Text(windows::view_of(argument.bstrVal));
}

TEST_F(ClsSocket, ASinkSeesEachStepOfAConversation) {
    std::string seen;
    const LoopbackServer server([&](Peer& peer) {
        seen = peer.read_until("\r\n");
        peer.write("\xAF\xF3\xB3w");  // "Żółw" in code page 1250
        while (!peer.read_some().empty()) {
        }
    });
    std::vector<base::Text> story;
    const ConnectedSink sink(socket, socket_events, [&](const ReceivedEvent& event) {
        switch (event.id) {
            case binary_data:
                EXPECT_EQ(com::Codec<base::Bytes>::read(windows::look_through(event.arguments[0]),
                                                        LOCALE_USER_DEFAULT),
                          (base::Bytes{0xAF, 0xF3, 0xB3, 'w'}));
                story.push_back(u"bajty");
                break;
            case text_data:
                story.push_back(u"tekst " + text_of(event.arguments[0]));
                break;
            case progress_info:
                story.push_back(text_of(event.arguments[0]) + u" " + text_of(event.arguments[1]));
                break;
            case task_completed:
                EXPECT_EQ(event.arguments[0].vt, VT_BOOL);
                story.push_back(event.arguments[0].boolVal == VARIANT_TRUE ? u"koniec" : u"nic");
                break;
            case abort_check:
                EXPECT_EQ(event.arguments[0].vt, VT_BYREF | VT_BOOL);
                break;
            default:
                ADD_FAILURE() << event.id;
        }
        return S_OK;
    });
    const base::Text address = server.address();
    ASSERT_EQ(open(address, 10'000), 1);
    send(u"za\u017C\u00F3\u0142\u0107\r\n");
    EXPECT_EQ(receive(), u"\u017B\u00F3\u0142w");
    EXPECT_EQ(call(socket, u"CloseSocket").code, S_OK);
    EXPECT_EQ(seen, "za\xBF\xF3\xB3\xE6\r\n");
    EXPECT_EQ(story, (std::vector<base::Text>{u"Łączenie " + address, u"Połączono " + address,
                                              u"koniec", u"Wysłano 8", u"koniec", u"Odebrano 4",
                                              u"bajty", u"tekst \u017B\u00F3\u0142w", u"koniec",
                                              u"Zamknięto " + address, u"koniec"}));
}

TEST_F(ClsSocket, AHandlerEndsAWaitThroughAbort) {
    const LoopbackServer server([](Peer& peer) {
        while (!peer.read_some().empty()) {
        }
    });
    const ConnectedSink sink(socket, socket_events, [](const ReceivedEvent& event) {
        if (event.id == abort_check) *event.arguments[0].pboolVal = VARIANT_TRUE;
        return S_OK;
    });
    ASSERT_EQ(open(server.address(), 600'000), 1);
    EXPECT_EQ(receive(), u"");
    EXPECT_EQ(std::count(sink->events.begin(), sink->events.end(), abort_check), 1);
    EXPECT_EQ(sink->events.back(), task_completed);
    socket = {};
}

TEST_F(ClsSocket, PercentDoneStopsALongText) {
    const LoopbackServer server([](Peer& peer) {
        while (!peer.read_some().empty()) {
        }
    });
    LONG last_percent = 0;
    const ConnectedSink sink(socket, socket_events, [&](const ReceivedEvent& event) {
        if (event.id != percent_done) return S_OK;
        EXPECT_EQ(event.arguments[0].vt, VT_I4);
        last_percent = event.arguments[0].lVal;
        if (last_percent >= 30) *event.arguments[1].pboolVal = VARIANT_TRUE;
        return S_OK;
    });
    ASSERT_EQ(open(server.address(), 10'000), 1);
    send(base::Text(1'000'000, u'x'));
    EXPECT_EQ(last_percent, 32) << "the fifth piece of 65 536 bytes";
    socket = {};
}

TEST_F(ClsSocket, WorksWithoutASinkAndRaisesNothing) {
    base::Text nobody;
    {
        const LoopbackServer server([](Peer& peer) {
            peer.write("220 witaj");
            peer.reset();
        });
        nobody = server.address();
        ASSERT_EQ(open(server.address(), 10'000), 1);
        EXPECT_EQ(receive(), u"220 witaj");
        EXPECT_EQ(receive(), u"");
        EXPECT_EQ(open(server.address(), 10'000, 1), 0) << "no TLS there";
    }
    EXPECT_EQ(open(nobody, 10'000), 0);
    EXPECT_EQ(open(u"bez portu", 0), 0);
    send(u"nikomu");
    EXPECT_EQ(receive(), u"");
    EXPECT_EQ(call(socket, u"CloseSocket").code, S_OK);
}

}  // namespace
}  // namespace tavrix::test
