// Tavrix.clsSocket as a host with events uses it, against a server in this program.

#include <algorithm>

#include "com/guid.h"
#include "tests/com/event_sink.h"
#include "tests/ports/loopback_server.h"

namespace tavrix::test {
namespace {

constexpr GUID socket_events = com::guid("D7EFD24E-AC81-4DBF-A0D9-CD71DFC3386D");
constexpr DISPID abort_check = 2;

class ClsSocket : public testing::Test {
  protected:
    ComPointer<IDispatch> socket = create(u"Tavrix.clsSocket");

    /// As VB passes its variables.
    std::string open(const base::Text& address, LONG wait_ms) {
        const Variant text(address);
        BSTR variable = text.get().bstrVal;
        LONG tls = 0;
        return answer(socket, u"OpeneSocket",
                      {by_reference(&tls, VT_I4), by_reference(&wait_ms, VT_I4),
                       by_reference(&variable, VT_BSTR)});
    }
};

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
    const ConnectedSink sink(socket, socket_events);
    const std::string address = base::to_utf8(server.address());
    ASSERT_EQ(open(server.address(), 10'000), "long 1");
    Variant text(u"zażółć\r\n");
    EXPECT_EQ(answer(socket, u"SendString", {by_reference(text)}), "empty");
    EXPECT_EQ(answer(socket, u"ReceiveString"), "text Żółw");
    EXPECT_EQ(answer(socket, u"CloseSocket"), "empty");
    EXPECT_EQ(seen, "za\xBF\xF3\xB3\xE6\r\n");
    // Whether the host was asked for its patience is a matter of the clock.
    std::erase(sink->events, "2, ref bool 0");
    EXPECT_EQ(sink->events,
              (std::vector<std::string>{
                  "4, text Łączenie, text " + address, "4, text Połączono, text " + address,
                  "6, bool -1", "4, text Wysłano, text 8", "6, bool -1", "4, text Odebrano, text 4",
                  "1, ref byte[] 175 243 179 119", "3, text Żółw", "6, bool -1",
                  "4, text Zamknięto, text " + address, "6, bool -1"}));
}

TEST_F(ClsSocket, AHandlerEndsAWaitThroughAbort) {
    const LoopbackServer server(&listen);
    const ConnectedSink sink(socket, socket_events,
                             [](DISPID event, const std::vector<VARIANT>& arguments) {
                                 if (event == abort_check) *arguments[0].pboolVal = VARIANT_TRUE;
                                 return S_OK;
                             });
    ASSERT_EQ(open(server.address(), 600'000), "long 1");
    EXPECT_EQ(answer(socket, u"ReceiveString"), "text ");
    EXPECT_EQ(std::count(sink->events.begin(), sink->events.end(), "2, ref bool 0"), 1);
    socket = {};
}

std::string as_bytes(std::size_t number) {
    const auto word = static_cast<DWORD>(number);
    return {reinterpret_cast<const char*>(&word), sizeof word};
}

TEST_F(ClsSocket, AnAddressOfIpv6IsNoLocalNameThatPassesTheProxyBy) {
    std::string asked;
    const LoopbackServer proxy([&](Peer& peer) {
        asked = peer.read_until("\r\n\r\n");
        peer.write("HTTP/1.1 200 OK\r\n\r\n");
        listen(peer);
    });
    // The user's manual choice: a proxy for all but local names. The prefix has none of its own.
    const wchar_t* key =
        L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\Connections";
    const wchar_t* value = L"DefaultConnectionSettings";
    const std::string address = base::to_utf8(proxy.address());
    const std::string local = "<local>";
    constexpr DWORD version = 0x46;
    constexpr DWORD direct_and_proxy = 3;
    const std::string settings = as_bytes(version) + as_bytes(0) + as_bytes(direct_and_proxy) +
                                 as_bytes(address.size()) + address + as_bytes(local.size()) +
                                 local + std::string(36, '\0');
    RegSetKeyValueW(HKEY_CURRENT_USER, key, value, REG_BINARY, settings.data(),
                    static_cast<DWORD>(settings.size()));
    EXPECT_EQ(open(u"[::1]:9", 10'000), "long 1");
    socket = {};
    EXPECT_TRUE(asked.starts_with("CONNECT [::1]:9 ")) << asked;
    RegDeleteKeyValueW(HKEY_CURRENT_USER, key, value);
}

}  // namespace
}  // namespace tavrix::test
