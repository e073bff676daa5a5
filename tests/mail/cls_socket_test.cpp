// The socket class over real connections.

#include "mail/cls_socket.h"

#include <gtest/gtest.h>
#include <openssl/ssl.h>
#include <sys/socket.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <thread>

#include "base/error.h"
#include "ports/portable/curl_stream.h"
#include "tests/mail/socket_bench.h"
#include "tests/ports/loopback_server.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::test {
namespace {

using ports::Received;
using std::chrono::milliseconds;

using Lines = std::vector<std::string>;

void wait_for_the_client_to_leave(Peer& peer) {
    while (!peer.read_some().empty()) {
    }
}

TEST(Socket, CarriesTextsAsBytesOfTheCodePageAndTellsEachStep) {
    std::string seen;
    const LoopbackServer server([&](Peer& peer) {
        seen = peer.read_until("\r\n");
        peer.write("\xAF\xF3\xB3w\r\n");  // "Żółw" in code page 1250
        wait_for_the_client_to_leave(peer);
    });
    const std::string address = base::to_utf8(server.address());
    Bench bench;
    ASSERT_EQ(bench.socket.OpeneSocket(0, 5000, u"  " + server.address() + u" "), 1);
    bench.socket.SendString(u"za\u017C\u00F3\u0142\u0107\r\n");
    EXPECT_EQ(bench.socket.ReceiveString(), u"\u017B\u00F3\u0142w\r\n");
    bench.socket.CloseSocket();
    EXPECT_EQ(seen, "za\xBF\xF3\xB3\xE6\r\n");
    EXPECT_EQ(bench.listener.log, (Lines{"Łączenie " + address, "Połączono " + address, "done",
                                         "Wysłano 8", "done", "Odebrano 6", "binary 6",
                                         "text Żółw\r\n", "done", "Zamknięto " + address, "done"}));
}

TEST(Socket, RefusesWhatIsNoAddress) {
    for (const char16_t* address :
         {u"", u"localhost", u"localhost:", u":80", u"localhost:0", u"localhost:65536",
          u"localhost:80a", u"::1:80", u"[::1]", u"[localhost]:80", u"user@localhost:80",
          u"localhost/x:80", u"local host:80", u"[::1%25lo]:80", u"http://localhost:80",
          u"localhost:4294967377"}) {
        Bench bench;
        EXPECT_EQ(bench.socket.OpeneSocket(0, 5000, address), 0) << base::to_utf8(address);
        EXPECT_TRUE(bench.listener.has("Błąd Nieprawidłowy adres")) << base::to_utf8(address);
    }
}

TEST(Socket, FailsWhereNobodyListens) {
    std::u16string address;
    { address = LoopbackServer(wait_for_the_client_to_leave).address(); }
    Bench bench;
    EXPECT_EQ(bench.socket.OpeneSocket(0, 5000, address), 0);
    EXPECT_TRUE(bench.listener.has("Błąd "));
    EXPECT_EQ(bench.listener.log.back(), "failed");
    bench.listener.log.clear();
    bench.socket.SendString(u"x");
    EXPECT_EQ(bench.socket.ReceiveString(), u"");
    EXPECT_EQ(bench.listener.log, (Lines{"Błąd Połączenie nie jest otwarte.", "failed",
                                         "Błąd Połączenie nie jest otwarte.", "failed"}));
    bench.socket.CloseSocket();
    EXPECT_EQ(bench.listener.log.back(), "done");
}

TEST(Socket, GivesUpOnSilenceAndOnOneThatDoesNotRead) {
    std::atomic<bool> finished = false;
    const LoopbackServer server([&](Peer& peer) {
        peer.read_some();
        peer.write("jednak");
        while (!finished) std::this_thread::yield();
    });
    Bench bench;
    const auto release = std::shared_ptr<void>(nullptr, [&](void*) { finished = true; });
    ASSERT_EQ(bench.socket.OpeneSocket(0, 250, server.address()), 1);
    EXPECT_EQ(bench.socket.ReceiveString(), u"");
    EXPECT_TRUE(bench.listener.has("Błąd Przekroczono czas"));
    EXPECT_EQ(bench.listener.checks, 2) << "one for each 100 ms";
    bench.socket.SendString(u"?");
    EXPECT_EQ(bench.socket.ReceiveString(), u"jednak");
    bench.listener.log.clear();
    bench.socket.SendString(base::Text(20'000'000, u'x'));
    EXPECT_TRUE(bench.listener.has("Błąd Przekroczono czas"));
    EXPECT_TRUE(bench.listener.has("Zamknięto")) << "half a text is no text";
}

TEST(Socket, ReportsAnOrderlyEndAndAReset) {
    const LoopbackServer ending([](Peer& peer) { peer.write("koniec"); });
    Bench bench;
    ASSERT_EQ(bench.socket.OpeneSocket(0, 5000, ending.address()), 1);
    EXPECT_EQ(bench.socket.ReceiveString(), u"koniec") << "what came before the end is given";
    EXPECT_EQ(bench.socket.ReceiveString(), u"");
    EXPECT_TRUE(bench.listener.has("Błąd Druga strona"));

    const LoopbackServer resetting([](Peer& peer) {
        peer.read_some();
        peer.reset();
    });
    ASSERT_EQ(bench.socket.OpeneSocket(0, 5000, resetting.address()), 1);
    bench.socket.SendString(u"?");
    EXPECT_EQ(bench.socket.ReceiveString(), u"");
    EXPECT_EQ(bench.listener.log.back(), "failed");
    for (int i = 0; i < 3; ++i) bench.socket.SendString(u"do nikogo");
    EXPECT_EQ(bench.listener.log.back(), "failed");
    // The socket itself is as good as new.
    const LoopbackServer again([](Peer& peer) { peer.write("znowu"); });
    ASSERT_EQ(bench.socket.OpeneSocket(0, 5000, again.address()), 1);
    EXPECT_EQ(bench.socket.ReceiveString(), u"znowu");
}

TEST(Socket, EndlessDataFailsAtTheLimit) {
    const LoopbackServer server([](Peer& peer) {
        const std::string much(1024 * 1024, 'x');
        while (peer.write(much)) {
        }
    });
    Bench bench;
    ASSERT_EQ(bench.socket.OpeneSocket(0, 20'000, server.address()), 1);
    EXPECT_EQ(bench.socket.ReceiveString(), u"");
    EXPECT_TRUE(bench.listener.has("Błąd Odebrano ponad 64 MiB"));
    EXPECT_TRUE(bench.listener.has("Zamknięto"));
    EXPECT_FALSE(bench.listener.has("binary"));
}

TEST(Socket, SendsLongTextsInPieces) {
    std::size_t seen = 0;
    const LoopbackServer server([&](Peer& peer) {
        seen = peer.read_until("!").size();
        peer.write("mam");
        wait_for_the_client_to_leave(peer);
    });
    Bench bench;
    ASSERT_EQ(bench.socket.OpeneSocket(0, 20'000, server.address()), 1);
    bench.socket.SendString(base::Text(10'000'000, u'x') + u"!");
    EXPECT_EQ(bench.socket.ReceiveString(), u"mam");
    EXPECT_EQ(seen, 10'000'001u);
    const auto& percents = bench.listener.percents;
    EXPECT_EQ(percents.size(), 153u) << "65 536 bytes each";
    EXPECT_TRUE(std::is_sorted(percents.begin(), percents.end()));
    EXPECT_EQ(percents.back(), 100);
}

TEST(Socket, GoesThroughAProxyAsThroughATunnel) {
    std::string asked;
    const LoopbackServer proxy([&](Peer& peer) {
        asked = peer.read_until("\r\n\r\n");
        // The far end speaks first, in the same breath.
        peer.write("HTTP/1.1 200 OK\r\n\r\n220 witaj");
        wait_for_the_client_to_leave(peer);
    });
    ports::ConnectionSettings settings = settings_with();
    settings.proxy = "http://" + base::to_utf8(proxy.address());
    Bench bench(settings);
    ASSERT_EQ(bench.socket.OpeneSocket(0, 5000, u"poczta.example:110"), 1);
    EXPECT_EQ(bench.socket.ReceiveString(), u"220 witaj");
    EXPECT_TRUE(asked.starts_with("CONNECT poczta.example:110 HTTP/1.1\r\n")) << asked;

    const LoopbackServer refusing([&](Peer& peer) {
        peer.read_until("\r\n\r\n");
        peer.write("HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n");
    });
    settings.proxy = "http://" + base::to_utf8(refusing.address());
    Bench refused(settings);
    EXPECT_EQ(refused.socket.OpeneSocket(0, 5000, u"poczta.example:110"), 0);
    EXPECT_EQ(refused.listener.log.back(), "failed");
}

TEST(Socket, AProxyWhoseAnswerHasNoEndDoesNotHoldTheSlice) {
    std::atomic<bool> asked = false;
    std::atomic<bool> answering = false;
    const LoopbackServer proxy([&](Peer& peer) {
        peer.read_until("\r\n\r\n");
        asked = true;
        while (!answering) std::this_thread::yield();
        peer.write(
            "HTTP/1.1 407 Proxy Authentication Required\r\n"
            "Content-Length: 1000000000000\r\n\r\n");
        const std::string much(1024 * 1024, 'x');
        for (int i = 0; i < 2 && peer.write(much); ++i) {
        }
    });
    ports::ConnectionSettings settings = settings_with();
    settings.proxy = "http://" + base::to_utf8(proxy.address());
    const auto stream = ports::make_curl_stream(settings);
    stream->connect({"poczta.example", 110}, false);
    while (!asked) EXPECT_FALSE(stream->connected_within(milliseconds(1)));
    answering = true;
    base::Text reason;
    try {
        // Slices that were over a second ago, instead of a second that the test would wait for.
        while (!stream->connected_within(milliseconds(-1000))) {
        }
    } catch (const base::AutomationError& error) {
        reason = error.description();
    }
    EXPECT_EQ(reason, u"Odpowiedź serwera pośredniczącego nie ma końca.");
}

// -- TLS ------------------------------------------------------------------------------------------

template <auto Free>
struct Freed {
    void operator()(auto* object) const { Free(object); }
};
using Tls = std::unique_ptr<SSL, Freed<SSL_free>>;

/// The server's side of TLS, with a certificate for 127.0.0.1 that openssl signs with its own key.
class TlsIdentity {
  public:
    TlsIdentity() {
        const std::string command =
            "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 1 "
            "-subj /CN=test -addext subjectAltName=IP:127.0.0.1 -out '" +
            certificate() + "' -keyout '" + key() + "' 2>&1";
        if (std::system(command.c_str()) != 0) throw std::runtime_error("no certificate");
        SSL_CTX_use_certificate_file(context_.get(), certificate().c_str(), SSL_FILETYPE_PEM);
        SSL_CTX_use_PrivateKey_file(context_.get(), key().c_str(), SSL_FILETYPE_PEM);
    }
    std::string certificate() const { return folder_.path() / "certificate.pem"; }

    /// A server that says back everything that comes, until the client closes.
    std::function<void(Peer&)> echo() const {
        return [this](Peer& peer) {
            const Tls tls = accept(peer);
            char buffer[4096];
            for (int count = 0; tls && (count = SSL_read(tls.get(), buffer, sizeof buffer)) > 0;) {
                SSL_write(tls.get(), buffer, count);
            }
        };
    }

    /// Null when the client does not go on.
    Tls accept(Peer& peer) const {
        // OpenSSL writes to clients that have left. Only here: our own side must do without this.
        sigset_t broken_pipe;
        sigemptyset(&broken_pipe);
        sigaddset(&broken_pipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &broken_pipe, nullptr);
        Tls tls(SSL_new(context_.get()));
        SSL_set_fd(tls.get(), static_cast<int>(peer.socket()));
        if (SSL_accept(tls.get()) != 1) tls.reset();
        return tls;
    }

  private:
    std::string key() const { return folder_.path() / "key.pem"; }

    ScratchFolder folder_;
    std::unique_ptr<SSL_CTX, Freed<SSL_CTX_free>> context_{SSL_CTX_new(TLS_server_method())};
};

TEST(SocketTls, TrustsAPrivateAuthorityAndNobodyElse) {
    const TlsIdentity identity;
    const LoopbackServer server(identity.echo());
    Bench trusting(settings_with(identity.certificate()));
    ASSERT_EQ(trusting.socket.OpeneSocket(-1, 5000, server.address()), 1);
    trusting.socket.SendString(u"łódź");
    EXPECT_EQ(trusting.socket.ReceiveString(), u"łódź");
    // The same server, under a name that its certificate does not have.
    const base::Text other_name = u"localhost:" + base::to_decimal(server.port());
    EXPECT_EQ(trusting.socket.OpeneSocket(1, 5000, other_name), 0);

    Bench strict;
    EXPECT_EQ(strict.socket.OpeneSocket(1, 5000, server.address()), 0);
    EXPECT_TRUE(strict.listener.has("Błąd SSL certificate problem"));
}

TEST(SocketTls, ACutConnectionIsNoOrderlyEnd) {
    const TlsIdentity identity;
    for (const bool orderly : {true, false}) {
        const LoopbackServer server([&](Peer& peer) {
            const Tls tls = identity.accept(peer);
            SSL_write(tls.get(), "koniec", 6);
            // TLS's own word for the end.
            if (orderly) SSL_shutdown(tls.get());
            // What is unread when a socket closes makes a reset of its end.
            shutdown(static_cast<int>(peer.socket()), SHUT_WR);
            wait_for_the_client_to_leave(peer);
        });
        Bench bench(settings_with(identity.certificate()));
        ASSERT_EQ(bench.socket.OpeneSocket(1, 5000, server.address()), 1);
        EXPECT_EQ(bench.socket.ReceiveString(), u"koniec");
        EXPECT_EQ(bench.socket.ReceiveString(), u"");
        EXPECT_EQ(bench.listener.has("Błąd Druga strona zamknęła połączenie."), orderly);
        EXPECT_EQ(bench.listener.has("Błąd Połączenie TLS zostało przerwane."), !orderly);
        EXPECT_TRUE(bench.listener.has("Zamknięto"));
    }
}

TEST(SocketTls, PartOfALongTextCountsAsSoonAsItIsOnItsWay) {
    const TlsIdentity identity;
    const LoopbackServer server(identity.echo());
    const auto stream = ports::make_curl_stream(settings_with(identity.certificate()));
    stream->connect({"127.0.0.1", server.port()}, true);
    ASSERT_TRUE(stream->connected_within(milliseconds(5000)));
    const base::Bytes bytes(64 * 1024);
    EXPECT_EQ(stream->send(bytes, milliseconds(5000)).count, 16u * 1024);
}

TEST(SocketTls, AServerThatDoesNotSpeakItFailsAtOnceOrWithTheTimeOut) {
    const LoopbackServer talking([](Peer& peer) {
        peer.write("220 dzie\xF1 dobry\r\n");
        wait_for_the_client_to_leave(peer);
    });
    const LoopbackServer silent(wait_for_the_client_to_leave);
    Bench bench;
    EXPECT_EQ(bench.socket.OpeneSocket(1, 5000, talking.address()), 0);
    EXPECT_FALSE(bench.listener.has("Błąd Przekroczono czas"));
    EXPECT_EQ(bench.socket.OpeneSocket(1, 300, silent.address()), 0);
    EXPECT_TRUE(bench.listener.has("Błąd Przekroczono czas oczekiwania na połączenie."));
    EXPECT_GE(bench.listener.checks, 2);
}

}  // namespace
}  // namespace tavrix::test
