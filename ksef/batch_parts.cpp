#include "ksef/batch_parts.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

#include "base/error.h"
#include "ksef/authentication.h"
#include "ksef/batch_state.h"
#include "ksef/exchange.h"
#include "ksef/upload_deadline.h"

namespace tavrix::ksef {
namespace {

using base::Text;
using ports::HttpReply;
using namespace std::chrono_literals;

// The limits of the published interface.
constexpr std::uint64_t largest_package_bytes = 5'000'000'000;
constexpr std::size_t most_parts = 50;
constexpr int most_attempts = 4;
constexpr auto first_pause = 1000ms;
// The code of a session that the service has given up.
constexpr std::string_view cancelled = "440";

// Whether the same request may do better in a moment; anything else was decided.
bool may_pass(const HttpReply& reply) {
    return !reply.completed || reply.status >= 500 || reply.status == 408 || reply.status == 429;
}

Text upload_failure(int status) {
    return u"wyysłka pliku:sessions/batch:STATUS:" + base::to_decimal(status);
}

class PartsSession : Exchange {
  public:
    PartsSession(KsefPorts& ports, Client& client, const BatchLogin& login,
                 const PartsOptions& options)
        : Exchange(ports, client, u"Nieznany błąd"), login_(login), options_(options) {}

    Text run(const Text& path, const FormCode& form) {
        try {
            if ((resume(path) || (prepare(path) && open_session(form))) &&
                (is_closed_ || (upload_all() && close()))) {
                session_is_over_ = true;
                result_.clear();
            }
            if (session_is_over_) forget();
        } catch (const base::AutomationError& error) {
            result_ = error.description();
        } catch (const std::exception&) {
            // The text says what was known.
        }
        return std::move(result_);
    }

  private:
    std::string batch_path(std::string_view rest) const {
        return "/api/v2/sessions/batch/" + path_segment(state_.reference) + std::string(rest);
    }

    // Whether an earlier call got as far as a session that can be ended now.
    bool resume(const Text& path) {
        auto kept = read_state(ports_.files, options_.state_file);
        if (!kept) return false;
        if (kept->service != client_.base_url) {
            throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm",
                                        u"Plik stanu jest z innego środowiska: " + kept->service);
        }
        const bool is_same_size = ports_.files.open(path)->size() == kept->package.bytes;
        state_ = std::move(*kept);
        state_.package.path = path;
        const HttpReply reply = session_status();
        if (!answered(reply, 200)) {
            throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm",
                                        failure_text(reply, u"sessions/:STATUS:"));
        }
        service_time_.emplace(ports_.clock, reply);
        const std::string code = status_code(reply);
        is_closed_ = is_closed(code);
        if (is_closed_ || (code != cancelled && is_same_size)) return true;
        state_ = {};
        return false;
    }

    bool prepare(const Text& path) {
        const std::uint64_t bytes = ports_.files.open(path)->size();
        if (bytes > largest_package_bytes || bytes > options_.part_bytes * most_parts) {
            return fail(u"Paczka jest za duża: " +
                        base::to_decimal(static_cast<std::int64_t>(bytes)) + u" bajtów");
        }
        Text failure = make_session_key(ports_.crypto, client_, state_.session_key);
        if (!failure.empty()) return fail(std::move(failure));
        state_.package = measure_package(ports_.files, ports_.crypto, path, state_.session_key,
                                         options_.part_bytes);
        return true;
    }

    bool open_session(const FormCode& form) {
        const HttpReply reply = client_.post_once(
            "/api/v2/sessions/batch", opening_of(state_.package, form, state_.session_key));
        if (!answered(reply, 201))
            return fail(failure_text(reply, u"sessions/batch:STATUS:", u"timeout"));
        service_time_.emplace(ports_.clock, reply);
        const Json answer = parse_json(reply.body.view());
        state_.service = client_.base_url;
        state_.reference = utf8_at(answer, "referenceNumber");
        read_addresses(json_at(answer, "partUploadRequests"));
        const bool is_whole =
            !state_.reference.empty() &&
            std::ranges::none_of(state_.addresses,
                                 [](const PartAddress& address) { return address.url.empty(); });
        if (is_whole && !options_.state_file.empty())
            write_state(ports_.files, options_.state_file, state_);
        return is_whole;
    }

    void read_addresses(const Json& requests) {
        state_.addresses.resize(state_.package.parts.size());
        for (const Json& request : requests) {
            const Json& ordinal = json_at(request, "ordinalNumber");
            if (!ordinal.is_number_unsigned()) continue;
            const auto place = ordinal.get<std::uint64_t>() - 1;
            if (place >= state_.addresses.size()) continue;
            PartAddress& address = state_.addresses[place];
            address.method = utf8_at(request, "method");
            address.url = base::SecretUtf8(utf8_at(request, "url"));
            address.headers = {{"Content-Type", "application/octet-stream"}};
            for (const auto& [name, value] : json_at(request, "headers").items()) {
                if (value.is_string()) address.headers.push_back({name, value});
            }
        }
    }

    bool upload_all() {
        const auto begin = ports_.clock.steady_now();
        const auto threads =
            std::min<std::size_t>(state_.addresses.size(),
                                  static_cast<std::size_t>(std::max(options_.uploads_at_once, 1)));
        {
            std::vector<std::jthread> others;
            for (std::size_t i = 1; i < threads; ++i)
                others.emplace_back([this] { upload_next(); });
            upload_next();
        }
        client_.put_off_end(ports_.clock.steady_now() - begin);
        return upload_failure_.empty() || fail(upload_failure_);
    }

    // Takes part after part until none is left, or one of them cannot be sent.
    void upload_next() {
        while (!upload_failed_) {
            const std::size_t part = next_part_++;
            if (part >= state_.addresses.size()) return;
            if (state_.addresses[part].sent) continue;
            Text failure;
            try {
                failure = upload_part(part);
            } catch (const base::AutomationError& error) {
                failure = error.description();
            } catch (const std::exception&) {
                failure = u"Nieznany błąd";
            }
            if (failure.empty()) continue;
            upload_failed_ = true;
            const std::lock_guard lock(failure_lock_);
            if (upload_failure_.empty()) upload_failure_ = std::move(failure);
        }
    }

    Text upload_part(std::size_t number) {
        PartAddress& address = state_.addresses[number];
        auto pause = first_pause;
        for (int attempt = 1;; ++attempt, pause *= 2) {
            if (!service_time_->is_in_time(address.url.view())) {
                session_is_over_ = true;
                return u"Upłynął czas na wysłanie części paczki";
            }
            std::int64_t sent = 0;
            PartSource source(ports_.files, ports_.crypto, state_.package,
                              state_.package.parts[number], state_.session_key,
                              [&](std::int64_t bytes) {
                                  sent += bytes;
                                  if (options_.on_sent) options_.on_sent(bytes);
                              });
            const HttpReply reply =
                client_.upload(address.method, address.url.view(), address.headers, source);
            if (answered(reply, 201)) {
                address.sent = true;
                if (!options_.state_file.empty())
                    add_sent_part(ports_.files, options_.state_file, number);
                return {};
            }
            if (options_.on_sent) options_.on_sent(-sent);
            if (answered(reply, 403)) session_is_over_ = true;  // the permission's time is over
            if (!may_pass(reply) || attempt == most_attempts) return upload_failure(reply.status);
            ports_.clock.sleep(pause);
        }
    }

    HttpReply session_status() {
        return with_login(
            [&] { return client_.get("/api/v2/sessions/" + path_segment(state_.reference)); });
    }

    // The access token may have run out while the parts were on their way.
    template <typename Request>
    HttpReply with_login(Request request) {
        HttpReply reply = request();
        if (!answered(reply, 401)) return reply;
        if (!authenticate(ports_, client_, login_.tax_number, login_.token).empty()) return reply;
        return request();
    }

    static std::string status_code(const HttpReply& reply) {
        return utf8_at(parse_json(reply.body.view()), "status.code");
    }
    static bool is_closed(const std::string& code) {
        return !code.empty() && code != "100" && code != cancelled;
    }

    // A closing whose answer got lost may have worked, and a second one is then refused.
    bool close() {
        if (options_.on_uploaded) options_.on_uploaded(state_.reference);
        for (int attempt = 1;; ++attempt) {
            const HttpReply reply =
                with_login([&] { return client_.post_once(batch_path("/close"), Body::object()); });
            if (answered(reply, 204)) return true;
            Text failure = failure_text(reply, u"sessions/online/close:STATUS:", u"timeout");
            session_is_over_ = !may_pass(reply) && reply.status != 401;
            if (!may_pass(reply)) return fail(std::move(failure));
            const HttpReply status = session_status();
            if (answered(status, 200) && is_closed(status_code(status))) return true;
            if (attempt == most_attempts) return fail(std::move(failure));
            ports_.clock.sleep(first_pause);
        }
    }

    // The key has no more use.
    void forget() {
        if (options_.state_file.empty() || !ports_.files.is_file(options_.state_file)) return;
        try {
            ports_.files.wipe(options_.state_file);
        } catch (const base::AutomationError&) {
            // What became of the session counts for more.
        }
    }

    const BatchLogin& login_;
    const PartsOptions& options_;
    BatchState state_;
    std::optional<ServiceTime> service_time_;
    bool is_closed_ = false;
    std::atomic<bool> session_is_over_ = false;
    std::atomic<std::size_t> next_part_ = 0;
    std::atomic<bool> upload_failed_ = false;
    std::mutex failure_lock_;
    Text upload_failure_;
};

}  // namespace

Text send_in_parts(KsefPorts& ports, Client& client, const Text& path, const FormCode& form,
                   const BatchLogin& login, const PartsOptions& options) {
    return PartsSession(ports, client, login, options).run(path, form);
}

}  // namespace tavrix::ksef
