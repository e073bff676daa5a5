#include "sandbox/http/connection.h"

#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <limits>
#include <sstream>

#include "sandbox/http/link.h"
#include "sandbox/http/message.h"
#include "sandbox/http/strictness.h"

namespace tavrix::sandbox {
namespace {

namespace http = beast::http;
using asio::awaitable;
using std::chrono::milliseconds;
using Parser = http::request_parser<http::string_body>;

constexpr std::size_t read_at_once = 16 * 1024;

/// The client has gone or taken too long, or a fault ends the connection: it closes as it is.
struct Gone {};

TransportRefusal refusal_of(const error_code& error) {
    if (!error || error == http::error::need_more) return {};
    if (error == http::error::body_limit) return {413, "more than a request to this path may have"};
    if (error == http::error::bad_version) return {505, "HTTP 1.1 and 1.0 are spoken here"};
    return {400, error.message()};
}

/// What one request takes of what all bodies together may.
class BodyShare {
  public:
    explicit BodyShare(std::size_t& in_flight) : in_flight_(in_flight) {}
    ~BodyShare() { in_flight_ -= taken_; }
    BodyShare(const BodyShare&) = delete;
    BodyShare& operator=(const BodyShare&) = delete;
    void now(std::size_t size) {
        in_flight_ += size - taken_;
        taken_ = size;
    }

  private:
    std::size_t& in_flight_;
    std::size_t taken_ = 0;
};

Answer answer_to(const TransportRefusal& refusal) {
    return {refusal.status, "text/plain", refusal.why + "\n", {}};
}

class Connection {
  public:
    Connection(asio::ip::tcp::socket socket, Premises premises, unsigned number)
        : link_(std::move(socket), premises.tls), premises_(premises), number_(number) {}

    awaitable<void> serve() {
        link_.expires_after(premises_.limits.head);
        if (!co_await link_.open()) co_return;
        try {
            while (co_await serve_request()) {
            }
        } catch (const Gone&) {
        }
    }

  private:
    /// False when the connection ends with the answer.
    awaitable<bool> serve_request();
    awaitable<TransportRefusal> read_head(Parser& parser);
    awaitable<TransportRefusal> read_body(Parser& parser, Request& request, BodyShare& share);
    /// Reads more, or throws Gone.
    awaitable<void> fill();
    Request to_request(const Parser& parser) const;

    awaitable<void> send(std::string_view data);
    awaitable<void> pause(int milliseconds_long);
    awaitable<void> deliver(std::string_view text, const Delivery& delivery);
    awaitable<void> send_in_pieces(std::string_view text, const Delivery& delivery);
    awaitable<void> wait_until_the_client_gives_up();
    awaitable<void> end();

    std::string_view received() const {
        return {static_cast<const char*>(buffer_.data().data()), buffer_.size()};
    }

    Link link_;
    Premises premises_;
    unsigned number_;
    beast::flat_buffer buffer_;
};

awaitable<bool> Connection::serve_request() {
    BodyShare share(premises_.body_bytes);
    Parser parser;
    parser.header_limit(longest_head);
    Request request;
    TransportRefusal refusal = co_await read_head(parser);
    if (refusal.status == 0) {
        request = to_request(parser);
        refusal = judge_framing(request, parser.get().version() == 11);
    }
    if (refusal.status == 0) refusal = co_await read_body(parser, request, share);
    if (refusal.status != 0) {
        // The rest of the request is unread, and where the next one begins unknown.
        const std::string text = answer_text(answer_to(refusal), {.keeps_open = false});
        co_await send(text);
        co_await end();
        co_return false;
    }

    request.body = parser.get().body();
    const Dispatcher::Outcome outcome = premises_.dispatcher.handle(request);
    const Framing framing{
        .keeps_open = parser.get().keep_alive(),
        .idle_s = int(std::chrono::floor<std::chrono::seconds>(premises_.limits.idle).count()),
        .head_only = parser.get().method() == http::verb::head};
    const std::string text = answer_text(outcome.answer, framing);
    co_await deliver(text, outcome.delivery);
    if (!framing.keeps_open) co_await end();
    co_return framing.keeps_open;
}

awaitable<TransportRefusal> Connection::read_head(Parser& parser) {
    link_.expires_after(premises_.limits.idle);
    if (buffer_.size() == 0) co_await fill();
    link_.expires_after(premises_.limits.head);
    HeadScanner scanner;
    auto progress = HeadScanner::Progress::wanting;
    while ((progress = scanner.scan(received())) == HeadScanner::Progress::wanting) co_await fill();
    if (progress == HeadScanner::Progress::refused) co_return scanner.refusal();
    buffer_.consume(scanner.begin());
    // How long the body may be depends on the head.
    parser.body_limit(std::numeric_limits<std::uint64_t>::max());
    error_code error;
    buffer_.consume(parser.put(buffer_.data(), error));
    co_return refusal_of(error);
}

awaitable<TransportRefusal> Connection::read_body(Parser& parser, Request& request,
                                                  BodyShare& share) {
    link_.expires_after(premises_.limits.body);
    const std::size_t largest = premises_.dispatcher.largest_body(request);
    const auto announced = parser.content_length();
    if (announced && *announced > largest) co_return refusal_of(http::error::body_limit);
    // For chunks, which announce nothing.
    parser.body_limit(largest);
    const bool awaited = !request.header("Expect").empty() && parser.get().version() == 11;
    if (awaited && !parser.is_done() && buffer_.size() == 0)
        co_await send("HTTP/1.1 100 Continue\r\n\r\n");
    parser.eager(true);
    while (!parser.is_done()) {
        error_code error;
        buffer_.consume(parser.put(buffer_.data(), error));
        share.now(parser.get().body().size());
        if (premises_.body_bytes > premises_.limits.body_bytes)
            co_return TransportRefusal{503, "too much is being uploaded at once; try again"};
        if (parser.is_done()) break;
        if (const TransportRefusal refusal = refusal_of(error); refusal.status != 0)
            co_return refusal;
        // Of a body the parser only leaves the first line of a chunk, or trailers, until it has
        // them whole.
        if (buffer_.size() > longest_head) co_return TransportRefusal{431, "a chunk without end"};
        co_await fill();
    }
    co_return TransportRefusal{};
}

awaitable<void> Connection::fill() {
    error_code error;
    const std::size_t count = co_await link_.read_some(buffer_.prepare(read_at_once), error);
    if (error) throw Gone{};
    buffer_.commit(count);
}

/// Trailers come later and are not taken for headers.
Request Connection::to_request(const Parser& parser) const {
    const auto text = [](beast::string_view view) { return std::string(view.data(), view.size()); };
    const auto& head = parser.get();
    Request request;
    request.method = text(head.method_string());
    request.target = text(head.target());
    for (const auto& field : head)
        request.headers.emplace_back(text(field.name_string()), text(field.value()));
    request.connection = number_;
    error_code ignored;
    request.remote_address = link_.socket().remote_endpoint(ignored).address().to_string();
    std::ostringstream local;
    local << link_.socket().local_endpoint(ignored);
    complete_request(request, link_.secure() ? "https" : "http", local.str());
    return request;
}

awaitable<void> Connection::send(std::string_view data) {
    link_.expires_after(premises_.limits.answer);
    // Two statements: in one, GCC 12 gives the thrown object the frame's first bytes.
    const bool sent = co_await link_.write(data);
    if (!sent) throw Gone{};
}

awaitable<void> Connection::pause(int milliseconds_long) {
    asio::steady_timer timer(link_.executor(), milliseconds(milliseconds_long));
    co_await timer.async_wait(asio::use_awaitable);
}

awaitable<void> Connection::deliver(std::string_view text, const Delivery& delivery) {
    using Mode = Delivery::Mode;
    if (delivery.delay_ms > 0) co_await pause(delivery.delay_ms);
    const std::size_t body = text.find("\r\n\r\n") + 4;
    // Past the head and into the body, so that the client has begun to believe in the answer.
    const std::string_view half = text.substr(0, body + (text.size() - body) / 2);
    if (delivery.mode == Mode::whole) {
        co_await send(text);
        co_return;
    }
    if (delivery.mode == Mode::drip) {
        co_await send_in_pieces(text, delivery);
        co_return;
    }
    if (delivery.mode == Mode::hang) co_await wait_until_the_client_gives_up();
    if (delivery.mode == Mode::cut || delivery.mode == Mode::reset) co_await send(half);
    if (delivery.mode == Mode::reset) {
        // Give the client the first half before the reset overtakes it.
        co_await pause(50);
        link_.reset();
    }
    throw Gone{};
}

awaitable<void> Connection::send_in_pieces(std::string_view text, const Delivery& delivery) {
    for (std::size_t at = 0; at < text.size(); at += delivery.piece_bytes) {
        if (at > 0) co_await pause(delivery.interval_ms);
        co_await send(text.substr(at, delivery.piece_bytes));
    }
}

awaitable<void> Connection::wait_until_the_client_gives_up() {
    link_.expires_never();
    for (;;) {
        buffer_.clear();
        co_await fill();
    }
}

awaitable<void> Connection::end() {
    link_.expires_after(premises_.limits.farewell);
    co_await link_.finish();
}

}  // namespace

awaitable<void> serve_connection(asio::ip::tcp::socket socket, Premises premises, unsigned number) {
    Connection connection(std::move(socket), premises, number);
    co_await connection.serve();
}

awaitable<void> turn_away(asio::ip::tcp::socket socket, Premises premises) {
    if (premises.tls != nullptr) co_return;
    Link link(std::move(socket), nullptr);
    link.expires_after(premises.limits.farewell);
    Answer answer = answer_to({503, "too many connections; try again"});
    answer.headers.emplace_back("Retry-After", "1");
    const std::string text = answer_text(answer, {.keeps_open = false});
    if (co_await link.write(text)) co_await link.finish();
}

}  // namespace tavrix::sandbox
