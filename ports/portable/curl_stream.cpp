#include "ports/portable/curl_stream.h"

#include <openssl/ssl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>

#include "ports/portable/curl_connection.h"

namespace tavrix::ports {
namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr std::size_t receive_bytes = 64 * 1024;
// One record of TLS: of more, nothing counts as sent before all of it is.
constexpr std::size_t send_bytes = 16 * 1024;
// How long libcurl may read on behind the end of a slice, before that counts as never ending.
constexpr std::chrono::seconds patience{1};
// Only so that libcurl's own limit of five minutes never speaks before the caller's.
constexpr long connect_timeout_ms = 86'400'000;

struct MultiDeleter {
    void operator()(CURLM* handle) const noexcept { curl_multi_cleanup(handle); }
};

// Windows' own numbers (winsock2.h).
constexpr std::int32_t address_not_available = 10049;
constexpr std::int32_t network_unreachable = 10051;
constexpr std::int32_t connection_aborted = 10053;
constexpr std::int32_t connection_reset = 10054;
constexpr std::int32_t not_connected = 10057;
constexpr std::int32_t timed_out = 10060;
constexpr std::int32_t connection_refused = 10061;
constexpr std::int32_t host_unreachable = 10065;
constexpr std::int32_t host_not_found = 11001;

[[noreturn]] void fail(std::int32_t number, base::TextView words) {
    throw StreamError(number, base::Text(words));
}

// `system_number` is errno's, or on Windows the socket's own already. 0 for what has no number.
std::int32_t socket_number_of(long system_number) {
    constexpr long first_of_windows = 10'000;
    if (system_number >= first_of_windows) return static_cast<std::int32_t>(system_number);
    switch (system_number) {
        case ECONNREFUSED:
            return connection_refused;
        case ETIMEDOUT:
            return timed_out;
        case ENETUNREACH:
            return network_unreachable;
        case EHOSTUNREACH:
            return host_unreachable;
        case EADDRNOTAVAIL:
            return address_not_available;
        case ECONNABORTED:
            return connection_aborted;
        case ECONNRESET:
        case EPIPE:
            return connection_reset;
        default:
            return 0;
    }
}

std::int32_t socket_number_of(CURLcode code, long system_number) {
    const std::int32_t known = socket_number_of(system_number);
    switch (code) {
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_RESOLVE_PROXY:
            return host_not_found;
        case CURLE_COULDNT_CONNECT:
            return known != 0 ? known : connection_refused;
        case CURLE_OPERATION_TIMEDOUT:
            return timed_out;
        case CURLE_SEND_ERROR:
        case CURLE_RECV_ERROR:
        case CURLE_GOT_NOTHING:
            return known != 0 ? known : connection_reset;
        default:
            return connection_aborted;
    }
}

// Nothing that could mean something else in a URL.
bool is_host(std::string_view host) {
    if (host.find(':') != std::string_view::npos) {
        return host.find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos;
    }
    return !host.empty() && std::none_of(host.begin(), host.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte <= ' ' || byte == 0x7F ||
               std::string_view("\"#%/<>?@[\\]^`{|}").find(c) != std::string_view::npos;
    });
}

// libcurl's connections have an HTTP address, whatever is said on them, unless TLS begins with a
// protocol's own command: that one it must know.
std::string_view scheme_of(Security security) {
    switch (security) {
        case Security::none:
            return "http://";
        case Security::tls:
            return "https://";
        case Security::tls_after_stls:
            return "pop3://";
        case Security::tls_after_starttls:
            return "smtp://";
    }
    return {};
}

std::string url_of(const StreamAddress& address, Security security) {
    if (!is_host(address.host) || address.port == 0) {
        fail(address_not_available, u"Nieprawidłowy adres serwera.");
    }
    const bool is_ipv6 = address.host.find(':') != std::string::npos;
    std::string url = std::string(scheme_of(security)) +
                      (is_ipv6 ? "[" + address.host + "]" : address.host) + ":" +
                      std::to_string(address.port);
    // What libcurl calls itself in EHLO, "[127.0.0.1]": this machine's name is nobody's business,
    // and servers refuse one without a dot.
    if (security == Security::tls_after_starttls) url += "/%5B127.0.0.1%5D";
    return url;
}

// The first line, which must not steer whatever shows it.
base::Text words_of_stranger(std::string_view line) {
    base::Text words = base::from_utf8(line.substr(0, line.find_first_of("\r\n")));
    std::ranges::replace_if(
        words, [](char16_t c) { return c < 0x20 || (c >= 0x7F && c <= 0x9F); }, u' ');
    return words;
}

class CurlStream final : public Stream {
  public:
    explicit CurlStream(const ConnectionSettings& settings) : settings_(settings) {}
    ~CurlStream() override { close(); }

    void connect(const StreamAddress& address, Security security) override {
        close();
        tls_ = security != Security::none;
        const std::string url = url_of(address, security);
        easy_ = make_curl_easy();
        multi_.reset(curl_multi_init());
        if (!multi_) throw std::bad_alloc();
        set_connection_options(easy_.get(), settings_, url);
        set(CURLOPT_URL, url.c_str());
        set(CURLOPT_PROTOCOLS_STR, "http,https,pop3,smtp");
        // A server that does not offer TLS is left before anything is said to it.
        set(CURLOPT_USE_SSL, static_cast<long>(CURLUSESSL_ALL));
        set(CURLOPT_CONNECT_ONLY, 1L);
        set(CURLOPT_HTTPPROXYTUNNEL, 1L);
        // What will be spoken is not HTTP.
        set(CURLOPT_SSL_ENABLE_ALPN, 0L);
        set(CURLOPT_CONNECTTIMEOUT_MS, connect_timeout_ms);
        // What a server says until TLS has begun.
        server_line_.clear();
        set(CURLOPT_HEADERFUNCTION, &CurlStream::keep_line);
        set(CURLOPT_HEADERDATA, this);
        // libcurl reads what a proxy says to the end, without a look at the clock.
        set(CURLOPT_NOPROGRESS, 0L);
        set(CURLOPT_XFERINFOFUNCTION, &CurlStream::stop_what_never_ends);
        set(CURLOPT_XFERINFODATA, this);
        words_[0] = '\0';
        set(CURLOPT_ERRORBUFFER, words_.data());
        if (curl_multi_add_handle(multi_.get(), easy_.get()) != CURLM_OK) throw std::bad_alloc();
    }

    bool connected_within(milliseconds slice) override {
        require_begun();
        const auto deadline = SteadyClock::now() + slice;
        never_ending_at_ = deadline + patience;
        while (!connected_) {
            int running = 0;
            curl_multi_perform(multi_.get(), &running);
            look_for_outcome();
            if (connected_) break;
            const int left_ms = milliseconds_until(deadline);
            if (left_ms == 0) return false;
            curl_multi_poll(multi_.get(), nullptr, 0, left_ms, nullptr);
            // A machine that slept meanwhile must not look like a proxy that never ends.
            if (SteadyClock::now() >= deadline) return false;
        }
        return true;
    }

    Sent send(base::ByteView bytes, milliseconds slice) override {
        require_connected();
        bytes = bytes.first(std::min(bytes.size(), send_bytes));
        const auto start = SteadyClock::now();
        for (;;) {
            std::size_t count = 0;
            const CURLcode code = curl_easy_send(easy_.get(), bytes.data(), bytes.size(), &count);
            if (code != CURLE_OK && code != CURLE_AGAIN) give_up(code);
            if (code == CURLE_OK || !wait_until_ready(CURL_WAIT_POLLOUT, start + slice)) {
                return {count, since(start)};
            }
        }
    }

    Received receive(milliseconds slice) override {
        require_connected();
        const auto start = SteadyClock::now();
        Received received;
        received.bytes.resize(receive_bytes);
        for (;;) {
            std::size_t count = 0;
            const CURLcode code =
                curl_easy_recv(easy_.get(), received.bytes.data(), received.bytes.size(), &count);
            if (code != CURLE_OK && code != CURLE_AGAIN) give_up(code);
            const bool nothing_yet = code == CURLE_AGAIN;
            if (nothing_yet && wait_until_ready(CURL_WAIT_POLLIN, start + slice)) continue;
            if (!nothing_yet && count == 0) require_orderly_end();
            received.bytes.resize(count);
            received.waited = since(start);
            received.state = nothing_yet  ? Received::State::nothing_yet
                             : count == 0 ? Received::State::ended
                                          : Received::State::data;
            return received;
        }
    }

    void close() noexcept override {
        connected_ = false;
        // A connection outlives its easy handle only in the multi handle.
        if (multi_ && easy_) curl_multi_remove_handle(multi_.get(), easy_.get());
        easy_.reset();
        multi_.reset();
    }

  private:
    template <typename Value>
    void set(CURLoption option, Value value) {
        curl_easy_setopt(easy_.get(), option, value);
    }

    void require_begun() const {
        if (!multi_) fail(not_connected, u"Połączenie nie jest otwarte.");
    }
    void require_connected() const {
        if (!connected_) fail(not_connected, u"Połączenie nie jest otwarte.");
    }

    // libcurl takes the bare end of the TCP connection for an end too. Anyone on the path can bring
    // that about, and so cut a text where it suits him.
    void require_orderly_end() {
        if (!tls_) return;
        const SSL* const session = tls_session();
        if (session != nullptr && (SSL_get_shutdown(session) & SSL_RECEIVED_SHUTDOWN) != 0) return;
        close();
        fail(connection_aborted, u"Połączenie TLS zostało przerwane.");
    }

    const SSL* tls_session() const {
        const curl_tlssessioninfo* session = nullptr;
        curl_easy_getinfo(easy_.get(), CURLINFO_TLS_SSL_PTR, &session);
        if (session == nullptr || session->backend != CURLSSLBACKEND_OPENSSL) return nullptr;
        return static_cast<const SSL*>(session->internals);
    }

    static int stop_what_never_ends(void* stream, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
        return SteadyClock::now() >= static_cast<CurlStream*>(stream)->never_ending_at_ ? 1 : 0;
    }

    static std::size_t keep_line(const char* bytes, std::size_t size, std::size_t count,
                                 void* stream) {
        // A proxy's answer comes here too, in as many lines as it likes: the last one counts.
        static_cast<CurlStream*>(stream)->server_line_.assign(bytes, size * count);
        return size * count;
    }

    void look_for_outcome() {
        int left = 0;
        while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
            if (message->msg != CURLMSG_DONE) continue;
            if (message->data.result != CURLE_OK) give_up(message->data.result);
            connected_ = true;
        }
    }

    [[noreturn]] void give_up(CURLcode code) {
        if (code == CURLE_ABORTED_BY_CALLBACK) {
            close();
            fail(connection_aborted, u"Odpowiedź serwera pośredniczącego nie ma końca.");
        }
        const std::int32_t number = socket_number_of(code, system_number());
        base::Text words = words_of(code);
        close();
        fail(number, words);
    }

    long system_number() const {
        long number = 0;
        curl_easy_getinfo(easy_.get(), CURLINFO_OS_ERRNO, &number);
        return number;
    }

    base::Text words_of(CURLcode code) const {
        // libcurl tells only that a server refused, not how.
        const bool tls_denied =
            code == CURLE_USE_SSL_FAILED &&
            std::string_view(words_.data()).find("denied") != std::string_view::npos;
        const bool denied = code == CURLE_REMOTE_ACCESS_DENIED || tls_denied;
        if ((code == CURLE_WEIRD_SERVER_REPLY || denied) && !server_line_.empty()) {
            return u"Serwer odmówił: " + words_of_stranger(server_line_);
        }
        if (code == CURLE_USE_SSL_FAILED)
            return u"Serwer nie oferuje szyfrowania TLS na tym porcie.";
        return base::from_utf8(words_[0] != '\0' ? words_.data() : curl_easy_strerror(code));
    }

    static std::chrono::microseconds since(SteadyClock::time_point start) {
        return std::chrono::duration_cast<std::chrono::microseconds>(SteadyClock::now() - start);
    }

    // 0 only when the deadline has passed.
    static int milliseconds_until(SteadyClock::time_point deadline) {
        const auto left = std::chrono::ceil<milliseconds>(deadline - SteadyClock::now());
        return static_cast<int>(std::clamp<milliseconds::rep>(left.count(), 0, 60'000));
    }

    // False when the deadline passed before.
    bool wait_until_ready(short events, SteadyClock::time_point deadline) {
        const int left_ms = milliseconds_until(deadline);
        if (left_ms == 0) return false;
        curl_waitfd socket{};
        if (curl_easy_getinfo(easy_.get(), CURLINFO_ACTIVESOCKET, &socket.fd) != CURLE_OK ||
            socket.fd == CURL_SOCKET_BAD) {
            give_up(CURLE_SEND_ERROR);
        }
        socket.events = events;
        curl_multi_poll(multi_.get(), &socket, 1, left_ms, nullptr);
        return true;
    }

    ConnectionSettings settings_;
    std::array<char, CURL_ERROR_SIZE> words_{};
    std::string server_line_;
    CurlEasy easy_;
    std::unique_ptr<CURLM, MultiDeleter> multi_;
    SteadyClock::time_point never_ending_at_;
    bool tls_ = false;
    bool connected_ = false;
};

}  // namespace

std::unique_ptr<Stream> make_curl_stream(const ConnectionSettings& settings) {
    return std::make_unique<CurlStream>(settings);
}

std::unique_ptr<Stream> make_curl_mail_stream(ConnectionSettings settings) {
    settings.proxy = "direct";
    return std::make_unique<CurlStream>(settings);
}

}  // namespace tavrix::ports
