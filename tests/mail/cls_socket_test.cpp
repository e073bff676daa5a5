// The socket class over real connections.

#include <gtest/gtest.h>
#include <openssl/ssl.h>
#include <sys/socket.h>

#include <csignal>
#include <cstdlib>

#include "base/error.h"
#include "tests/mail/socket_bench.h"
#include "tests/ports/loopback_server.h"
#include "tests/support/scratch_folder.h"

namespace tavrix::test {
namespace {

void wait_for_the_client_to_leave(Peer& peer) {
    while (!peer.read_some().empty()) {
    }
}

TEST(Socket, RefusesWhatIsNoAddress) {
    Bench bench;
    for (const char16_t* address :
         {u"", u"localhost", u"localhost:", u":80", u"localhost:0", u"localhost:65536", u"::1:80",
          u"[localhost]:80", u"user@localhost:80", u"localhost/x:80", u"local host:80",
          u"[::1%25lo]:80", u"localhost:4294967377"}) {
        bench.listener.log.clear();
        EXPECT_EQ(bench.socket.OpeneSocket(0, 5000, address), 0) << base::to_utf8(address);
        EXPECT_TRUE(bench.listener.has("Błąd Nieprawidłowy adres")) << base::to_utf8(address);
    }
}

TEST(Socket, GivesUpOnSilenceAndOnOneThatDoesNotRead) {
    std::atomic<bool> finished = false;
    const LoopbackServer server([&](Peer&) { finished.wait(false); });
    Bench bench;
    EXPECT_EQ(bench.socket.OpeneSocket(1, 250, server.address()), 0) << "no TLS comes back";
    EXPECT_TRUE(bench.listener.has("Błąd Przekroczono czas oczekiwania na połączenie."));
    ASSERT_EQ(bench.socket.OpeneSocket(0, 250, u"  " + server.address() + u" "), 1);
    bench.listener.log.clear();
    bench.socket.SendString(base::Text(20'000'000, u'x'));
    EXPECT_TRUE(bench.listener.has("Błąd Przekroczono czas"));
    EXPECT_TRUE(bench.listener.has("Zamknięto")) << "half a text is no text";
    finished = true;
    finished.notify_one();
}

TEST(Socket, ReportsAnOrderlyEndAndAReset) {
    Bench bench;
    for (const bool orderly : {true, false}) {
        const LoopbackServer server([&](Peer& peer) {
            peer.write("koniec");
            peer.read_some();
            if (!orderly) peer.reset();
        });
        // After a failure the socket is as good as new.
        ASSERT_EQ(bench.socket.OpeneSocket(0, 5000, server.address()), 1);
        EXPECT_EQ(bench.socket.ReceiveString(), u"koniec");
        bench.listener.log.clear();
        bench.socket.SendString(u"?");
        EXPECT_EQ(bench.socket.ReceiveString(), u"");
        EXPECT_EQ(bench.listener.has("Błąd Druga strona zamknęła połączenie."), orderly);
        EXPECT_EQ(bench.listener.log.back(), "failed");
    }
}

TEST(Socket, GoesThroughAProxyAsThroughATunnel) {
    const std::pair<const char*, base::Text> answers[] = {
        // The far end speaks first, in the same breath.
        {"HTTP/1.1 200 OK\r\n\r\n220 witaj", u"220 witaj"},
        {"HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n", u""},
    };
    for (const auto& [answer, received] : answers) {
        std::string asked;
        const LoopbackServer proxy([&](Peer& peer) {
            asked = peer.read_until("\r\n\r\n");
            peer.write(answer);
            wait_for_the_client_to_leave(peer);
        });
        Bench bench(settings_with("", "http://" + base::to_utf8(proxy.address())));
        EXPECT_EQ(bench.socket.OpeneSocket(0, 5000, u"poczta.example:110"), !received.empty());
        EXPECT_EQ(bench.socket.ReceiveString(), received);
        EXPECT_TRUE(asked.starts_with("CONNECT poczta.example:110 HTTP/1.1\r\n")) << asked;
    }
}

TEST(Socket, AProxyWhoseAnswerHasNoEndDoesNotHoldTheSlice) {
    const LoopbackServer proxy([&](Peer& peer) {
        peer.read_until("\r\n\r\n");
        peer.write("HTTP/1.1 407 No\r\nContent-Length: 1000000000000\r\n\r\n");
        const std::string much(1024 * 1024, 'x');
        while (peer.write(much)) {
        }
    });
    Bench bench(settings_with("", "http://" + base::to_utf8(proxy.address())));
    EXPECT_EQ(bench.socket.OpeneSocket(0, 20'000, u"poczta.example:110"), 0);
    EXPECT_TRUE(bench.listener.has("Błąd Odpowiedź serwera pośredniczącego nie ma końca."));
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

// -- the streams of mail --------------------------------------------------------------------------

using ports::Security;

std::string line_from(SSL* tls) {
    std::string line;
    for (char c = 0; !line.ends_with('\n') && SSL_read(tls, &c, 1) > 0;) line += c;
    return line;
}

/// What came of connecting and of one command.
std::string said_by(Security security, const LoopbackServer& server, const std::string& ca_file) {
    const auto stream = ports::make_curl_mail_stream(settings_with(ca_file));
    try {
        stream->connect({"127.0.0.1", server.port()}, security);
        while (!stream->connected_within(std::chrono::milliseconds(5000))) {
        }
        stream->send(base::bytes_of("NOOP\r\n"), std::chrono::milliseconds(5000));
        return std::string(base::chars_of(stream->receive(std::chrono::milliseconds(5000)).bytes));
    } catch (const ports::StreamError& error) {
        return std::to_string(error.socket_number()) + " " + base::to_utf8(error.description());
    }
}

TEST(MailStream, BeginsTlsWithTheProtocolsOwnCommandAndNotWithoutIt) {
    const TlsIdentity identity;
    const std::string no_offer = "10053 Serwer nie oferuje szyfrowania TLS na tym porcie.";
    struct {
        Security security;
        const char* greeting;
        const char* offer;
        const char* begin;
        const char* offer_in_tls;
        std::string outcome;
    } const cases[] = {
        {Security::tls_after_stls, "+OK", "+OK\r\nSTLS\r\n.", "+OK", "+OK\r\n.", "NOOP\r\n"},
        {Security::tls_after_starttls, "220 x", "250-x\r\n250 STARTTLS", "220", "250 x",
         "NOOP\r\n"},
        {Security::tls_after_stls, "+OK", "+OK\r\nUSER\r\n.", "", "", no_offer},
        {Security::tls_after_stls, "+OK", "-ERR", "", "", no_offer},
        {Security::tls_after_starttls, "220 x", "250 x", "", "", no_offer},
        {Security::tls_after_starttls, "554 zajęty", "", "", "",
         "10053 Serwer odmówił: 554 zajęty"},
        {Security::tls_after_stls, "+OK", "+OK\r\nSTLS\r\n.", "-ERR \x1B nie", "",
         "10053 Serwer odmówił: -ERR   nie"},
        {Security::tls_after_starttls, "220 x", "250 STARTTLS", "454 nie", "",
         "10053 Serwer odmówił: 454 nie"},
        {Security::tls_after_starttls, "220 x", "501 kto", "501 kto", "",
         "10053 Serwer odmówił: 501 kto"},
        // Words of somebody on the path, before TLS protects from him.
        {Security::tls_after_stls, "+OK", "+OK\r\nSTLS\r\n.", "+OK\r\n+OK obcy", "",
         "10053 Serwer odmówił: +OK"},
    };
    for (const auto& c : cases) {
        const LoopbackServer server([&](Peer& peer) {
            peer.write(std::string(c.greeting) + "\r\n");
            for (const char* answer : {c.offer, c.begin}) {
                const std::string command = peer.read_until("\r\n");
                if (command.empty()) return;
                if (command[0] == 'E') {
                    EXPECT_EQ(command, "EHLO [127.0.0.1]\r\n");
                }
                if (*answer != '\0') peer.write(std::string(answer) + "\r\n");
            }
            const Tls tls = identity.accept(peer);
            if (!tls) return;
            line_from(tls.get());
            const std::string offer = std::string(c.offer_in_tls) + "\r\n";
            SSL_write(tls.get(), offer.data(), static_cast<int>(offer.size()));
            const std::string command = line_from(tls.get());
            SSL_write(tls.get(), command.data(), static_cast<int>(command.size()));
            wait_for_the_client_to_leave(peer);
        });
        EXPECT_EQ(said_by(c.security, server, identity.certificate()), c.outcome) << c.offer;
        if (c.outcome.starts_with("NOOP")) {
            EXPECT_TRUE(said_by(c.security, server, "").starts_with("10053 SSL certificate"));
        }
    }
}

TEST(MailStream, FailsWithTheSocketsNumber) {
    const LoopbackServer resetting([](Peer& peer) {
        peer.read_some();
        peer.reset();
    });
    EXPECT_TRUE(said_by(Security::none, resetting, "").starts_with("10054 "));
    auto gone = std::make_unique<LoopbackServer>([](Peer&) {});
    const std::uint16_t port = gone->port();
    gone.reset();
    const auto stream = ports::make_curl_mail_stream(settings_with("", "http://127.0.0.1:1"));
    for (const auto& [host, number] : {std::pair("127.0.0.1", 10061), {"nie.ma.invalid", 11001}}) {
        try {
            stream->connect({host, port}, Security::none);
            while (!stream->connected_within(std::chrono::milliseconds(5000))) {
            }
            FAIL() << host;
        } catch (const ports::StreamError& error) {
            EXPECT_EQ(error.socket_number(), number) << host;
        }
    }
}

}  // namespace
}  // namespace tavrix::test
