#include "sandbox/http/dispatcher.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <chrono>

#include "sandbox/basics/text.h"
#include "sandbox/http/steering_guard.h"
#include "sandbox/pages/page.h"
#include "sandbox/service/allowed_ips.h"
#include "sandbox/service/download_links.h"
#include "sandbox/service/package_work.h"
#include "sandbox/service/processing.h"

namespace tavrix::sandbox {
namespace {

/// The path without the root of the interface: `/v2`, or `/api/v2` as older clients have it.
std::string_view strip_root(std::string_view path) {
    for (const std::string_view root : {"/api/v2/", "/v2/"})
        if (path.starts_with(root)) return path.substr(root.size());
    return {};
}

std::string_view raw_path_of(const Request& request) {
    return std::string_view(request.target).substr(0, request.target.find('?'));
}

bool suits(Need need, BearerKind kind) {
    if (need == Need::access_or_refresh_token)
        return kind == BearerKind::access || kind == BearerKind::refresh;
    return kind == (need == Need::access_token    ? BearerKind::access
                    : need == Need::refresh_token ? BearerKind::refresh
                                                  : BearerKind::authentication);
}

double ms_since(std::chrono::steady_clock::time_point start) {
    const std::chrono::duration<double, std::milli> elapsed =
        std::chrono::steady_clock::now() - start;
    return elapsed.count();
}

/// What an operation saves becomes durable before its answer leaves.
class Transaction {
  public:
    explicit Transaction(Store& store) : store_(store) { store_.begin(); }
    ~Transaction() {
        try {
            store_.commit();
        } catch (const std::exception& error) {
            spdlog::error("{}", error.what());
        }
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit() { store_.commit(); }

  private:
    Store& store_;
};

Answer internal_error(const std::exception& error) {
    spdlog::error("an operation failed: {}", error.what());
    return Answer::empty(500);
}

}  // namespace

Dispatcher::Dispatcher(Options options, Clock& clock, std::unique_ptr<Store> store)
    : started_with_(std::move(options)),
      service_(started_with_, clock, std::move(store)),
      log_(std::size_t(service_.options.log_size)),
      worker_([this](const std::stop_token& stop) { work_between_requests(stop); }) {}

/// Goes on with packages in slices that no request has to wait for long.
void Dispatcher::work_between_requests(const std::stop_token& stop) {
    constexpr std::chrono::milliseconds slice{20}, pause{1};
    std::unique_lock lock(mutex_);
    const auto waiting = [this] { return packages_are_waiting(service_); };
    while (package_waits_.wait(lock, stop, waiting) && !stop.stop_requested()) {
        try {
            Transaction transaction(*service_.store);
            work_on_packages(service_, slice);
            transaction.commit();
        } catch (const std::exception& error) {
            spdlog::error("{}", error.what());
        }
        lock.unlock();
        std::this_thread::sleep_for(pause);
        lock.lock();
    }
}

std::size_t Dispatcher::largest_body(Request& request) {
    // Three megabytes of invoice are four of Base64; the rest of a request is small.
    constexpr std::size_t usual = 8 * 1024 * 1024;
    const std::string_view raw_path = raw_path_of(request);
    if (!raw_path.starts_with("/storage/")) return usual;
    bool path_known = false;
    const Route* route = find_route(interface_routes(), request, raw_path.substr(1), path_known);
    if (route == nullptr || route->handler != upload_part) return usual;
    const std::lock_guard lock(mutex_);
    return awaited_part(service_, request) == nullptr ? usual : std::size_t(largest_part);
}

Dispatcher::Outcome Dispatcher::handle(Request& request) {
    const std::string_view raw_path = raw_path_of(request);
    const std::lock_guard lock(mutex_);
    const auto start = std::chrono::steady_clock::now();

    // The published interface knows it as a header only.
    if (service_.options.strict)
        std::erase_if(request.query,
                      [](const auto& it) { return it.first == "x-continuation-token"; });
    bool path_known = false;
    const Route* route = nullptr;
    const std::string_view inside = strip_root(raw_path);
    if (!inside.empty()) route = find_route(interface_routes(), request, inside, path_known);
    if (inside.empty() && raw_path.starts_with("/storage/"))
        route = find_route(interface_routes(), request, raw_path.substr(1), path_known);
    request.bearer = service_.bearer_tokens.read(request.header("Authorization"), service_.now());
    Outcome outcome;
    if (route == nullptr && inside.empty()) {
        try {
            outcome.answer = serve_own_page(request, raw_path);
        } catch (const std::exception& error) {
            outcome.answer = internal_error(error);
        }
        // Most likely of a client with a wrong base address, whose author looks for it here.
        if (outcome.answer.status >= 400 && !raw_path.starts_with("/sandbox/"))
            log(request, nullptr, outcome, {}, ms_since(start));
        return outcome;
    }

    std::vector<Fault> faults;
    if (route == nullptr) {
        outcome.answer = Answer::empty(path_known ? 405 : 404);
    } else {
        faults = service_.faults.take(route->step);
        if (!prevents_handling(faults)) outcome = serve_interface(*route, request);
        outcome.delivery = apply_faults(
            faults,
            [&](const Refusal& refusal) {
                return refusal.answer(request, service_.now(), service_.options.time);
            },
            outcome.answer);
    }
    const std::string warning = ascii_folded(request.header("X-Test-System-Warning"));
    if (!warning.empty()) outcome.answer.headers.emplace_back("X-System-Warning", warning);
    log(request, route, outcome, faults, ms_since(start));
    if (packages_are_waiting(service_)) package_waits_.notify_one();
    return outcome;
}

Dispatcher::Outcome Dispatcher::serve_interface(const Route& route, Request& request) {
    try {
        Transaction transaction(*service_.store);
        Answer answer;
        try {
            answer = carry_out(route, request);
        } catch (const Refusal& refusal) {
            answer = refusal.answer(request, service_.now(), service_.options.time);
        }
        transaction.commit();
        return {std::move(answer), {}};
    } catch (const std::exception& error) {
        return {internal_error(error), {}};
    }
}

Answer Dispatcher::carry_out(const Route& route, Request& request) {
    check_bearer(route, request);
    check_rate(route, request);
    settle(service_);
    return route.handler(service_, request);
}

void Dispatcher::check_bearer(const Route& route, const Request& request) {
    if (route.access.need == Need::nothing) return;
    if (!suits(route.access.need, request.bearer.kind) || request.bearer.expired)
        throw unauthorized();
    // The other tokens carry no rights; their operations say themselves what they miss.
    if (request.bearer.kind != BearerKind::access) return;
    const Authentication& authentication = service_.authentication_of(request);
    if (!allows(authentication.allowed_ips, request.remote_address))
        throw address_not_allowed(request.remote_address);
    const auto& present = authentication.permissions;
    const auto required = route.access.permissions;
    const bool held = required.empty() ||
                      std::any_of(required.begin(), required.end(),
                                  [&](std::string_view name) { return contains(present, name); });
    if (!held) throw forbidden({required.begin(), required.end()}, present);
}

void Dispatcher::check_rate(const Route& route, const Request& request) {
    if (!service_.options.rate_limits) return;
    std::string caller = request.remote_address;
    if (request.bearer.kind == BearerKind::access)
        caller += "\n" + service_.authentication_of(request).context.value;
    limiter_.admit(caller, route.group, service_.now());
}

Answer Dispatcher::serve_own_page(Request& request, std::string_view raw_path) {
    const bool controls = raw_path.starts_with("/sandbox/");
    const bool reads = request.method == "GET" || request.method == "HEAD";
    if (!controls && !reads && !raw_path.starts_with("/ustawienia/"))
        return Answer::json(404, {{"error",
                                   "the operations of KSeF stand under /v2 and /api/v2, for "
                                   "example POST /v2/auth/challenge"}});
    if (controls || !reads) {
        const std::string reason = refuse_steering(request, service_.options.bind_address);
        if (!reason.empty()) return Answer::json(403, {{"error", reason}});
    }
    // What may be read here may be anybody's invoices.
    if (const std::string reason = refuse_name(request, service_.options.bind_address);
        !reason.empty())
        return Answer::json(403, {{"error", reason}});
    Transaction transaction(*service_.store);
    settle(service_);
    ControlRoom control_room{service_, limiter_, log_, started_with_};
    PageRoom page_room{service_, log_, is_step};
    Answer answer = controls ? control(control_room, request) : show_page(page_room, request);
    transaction.commit();
    return answer;
}

void Dispatcher::log(const Request& request, const Route* route, const Outcome& outcome,
                     const std::vector<Fault>& faults, double duration_ms) {
    LoggedRequest entry;
    static_cast<RequestHead&>(entry) = request;
    entry.time = service_.now();
    for (auto& [name, value] : entry.headers)
        if (lower(name) == "authorization") value = to_string(request.bearer.kind);
    entry.bearer = request.bearer.kind;
    // A part of a package would only be copied to be cut.
    const bool part = route != nullptr && route->handler == upload_part;
    entry.body =
        part ? "(" + std::to_string(request.body.size()) + " bytes)" : std::string(request.body);
    entry.answer = outcome.answer.body;
    entry.step = route == nullptr ? "unknown" : std::string(route->step);
    for (const Fault& fault : faults) entry.faults.emplace_back(to_string(fault.kind));
    entry.status = outcome.answer.status;
    entry.duration_ms = duration_ms;
    if (!service_.options.quiet)
        spdlog::info("{} {} {} {:.2f} ms{}", entry.method, mask_tokens(entry.target), entry.status,
                     duration_ms, faults.empty() ? "" : " (fault: " + entry.faults.front() + ")");
    log_.add(std::move(entry));
}

}  // namespace tavrix::sandbox
