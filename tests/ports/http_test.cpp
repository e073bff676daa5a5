#include <gtest/gtest.h>

#include "base/text.h"
#include "ports/portable/curl_http.h"
#include "tests/ports/loopback_server.h"

namespace tavrix::ports {
namespace {

/// What the client makes of a server's answer.
HttpReply ask(const std::string& head, std::size_t body_bytes) {
    const test::LoopbackServer server([&](test::Peer& peer) {
        peer.read_until("\r\n\r\n");
        peer.write("HTTP/1.1 " + head + "\r\nContent-Length: " + std::to_string(body_bytes) +
                   "\r\n\r\n");
        peer.write(std::string(body_bytes, 'x'));
    });
    ConnectionSettings settings;
    settings.proxy = "direct";
    const std::string url = "http://" + base::to_utf8(server.address()) + "/";
    return make_curl_http(settings)->send({"GET", base::SecretUtf8(url)});
}

TEST(Http, FollowsNoRedirect) {
    const HttpReply reply = ask("302 Found\r\nLocation: http://127.0.0.1:1/", 0);
    EXPECT_TRUE(reply.completed) << reply.error;
    EXPECT_EQ(reply.status, 302);
}

TEST(Http, TakesABodyOf64MiBAndNoMore) {
    constexpr std::size_t most = 64u * 1024 * 1024;
    EXPECT_EQ(ask("200 OK", most).body.size(), most);
    const HttpReply reply = ask("200 OK", most + 1);
    EXPECT_FALSE(reply.completed);
    EXPECT_EQ(reply.error, "the answer is larger than 64 MiB");
}

}  // namespace
}  // namespace tavrix::ports
