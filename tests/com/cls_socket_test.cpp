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

// Until the other side goes.
void listen(Peer& peer) {
    while (!peer.read_some().empty()) {
    }
}

TEST_F(ClsSocket, ASinkSeesEachStepOfAConversation) {
    std::string seen;
    const LoopbackServer server([&](Peer& peer) {
        seen = peer.read_until("\r\n");
        peer.write("\xAF\xF3\xB3w");  // "Żółw" in code page 1250
        listen(peer);
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
    const LoopbackServer server(&listen);
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

TEST_F(ClsSocket, AHostThatLetsGoInAHandlerIsNotWaitedFor) {
    const LoopbackServer server(&listen);
    std::unique_ptr<ConnectedSink> sink;
    sink = std::make_unique<ConnectedSink>(socket, socket_events, [&](const ReceivedEvent& event) {
        return event.id == abort_check ? sink->disconnect() : S_OK;
    });
    ASSERT_EQ(open(server.address(), 600'000), 1);
    EXPECT_EQ(receive(), u"");
    // Whoever never listened is waited for.
    ASSERT_EQ(open(server.address(), 150), 1);
    const ULONGLONG begun = GetTickCount64();
    EXPECT_EQ(receive(), u"");
    EXPECT_GE(GetTickCount64() - begun, 140u);
    socket = {};
}

TEST_F(ClsSocket, PercentsOfAVeryLongTextOnlyGrow) {
    const LoopbackServer server(&listen);
    std::vector<LONG> percents;
    const ConnectedSink sink(socket, socket_events, [&](const ReceivedEvent& event) {
        if (event.id == percent_done) {
            EXPECT_EQ(event.arguments[0].vt, VT_I4);
            percents.push_back(event.arguments[0].lVal);
        }
        return S_OK;
    });
    ASSERT_EQ(open(server.address(), 10'000), 1);
    // A hundred times as many do not fit into 32 bits.
    send(base::Text(43'500'000, u'x'));
    ASSERT_FALSE(percents.empty());
    EXPECT_TRUE(std::is_sorted(percents.begin(), percents.end()));
    EXPECT_EQ(percents.back(), 100);
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
        EXPECT_EQ(open(server.address(), 10'000, 1), 0) << "no TLS there";
    }
    EXPECT_EQ(open(nobody, 10'000), 0);
    send(u"nikomu");
    EXPECT_EQ(receive(), u"");
    EXPECT_EQ(call(socket, u"CloseSocket").code, S_OK);
}

/// The user's manual choice of a proxy, for as long as this lives; the prefix has none of its own.
class ChosenProxy {
  public:
    ChosenProxy(const std::string& proxy, const std::string& bypass) {
        constexpr DWORD version = 0x46;
        constexpr DWORD direct_and_proxy = 3;
        std::string settings;
        const auto add = [&](DWORD number) {
            settings.append(reinterpret_cast<const char*>(&number), sizeof number);
        };
        add(version);
        add(0);
        add(direct_and_proxy);
        for (const std::string& text : {proxy, bypass, std::string()}) {
            add(static_cast<DWORD>(text.size()));
            settings += text;
        }
        settings.resize(settings.size() + 32);
        EXPECT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, key, value, REG_BINARY, settings.data(),
                                  static_cast<DWORD>(settings.size())),
                  ERROR_SUCCESS);
    }
    ~ChosenProxy() { RegDeleteKeyValueW(HKEY_CURRENT_USER, key, value); }
    ChosenProxy(const ChosenProxy&) = delete;
    ChosenProxy& operator=(const ChosenProxy&) = delete;

  private:
    static constexpr const wchar_t* key =
        L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Connections";
    static constexpr const wchar_t* value = L"DefaultConnectionSettings";
};

TEST_F(ClsSocket, AnAddressOfIpv6IsNoLocalNameThatPassesTheProxyBy) {
    std::string asked;
    const LoopbackServer proxy([&](Peer& peer) {
        asked = peer.read_until("\r\n\r\n");
        peer.write("HTTP/1.1 200 OK\r\n\r\n");
        listen(peer);
    });
    const ChosenProxy chosen(base::to_utf8(proxy.address()), "<local>");
    EXPECT_EQ(open(u"[::1]:9", 10'000), 1);
    socket = {};
    EXPECT_TRUE(asked.starts_with("CONNECT [::1]:9 ")) << asked;
}

}  // namespace
}  // namespace tavrix::test
