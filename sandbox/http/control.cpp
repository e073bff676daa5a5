#include "sandbox/http/control.h"

#include <algorithm>
#include <stdexcept>

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/ksef_number.h"
#include "sandbox/basics/text.h"
#include "sandbox/http/routes.h"
#include "sandbox/http/state_json.h"
#include "sandbox/pages/html.h"
#include "sandbox/service/certificates.h"
#include "sandbox/service/pace_limits.h"
#include "sandbox/service/processing.h"
#include "sandbox/service/purchases.h"

namespace tavrix::sandbox {
namespace {

Json body_of(const Request& request) {
    if (request.body.empty()) return Json::object();
    const auto body = read_json(request.body);
    if (!body) throw std::invalid_argument("the body is not JSON");
    return *body;
}

/// A whole number in the query, or what stands for it when it is absent.
std::size_t number_in_query(const Request& request, const char* name, std::size_t usual,
                            std::size_t least, std::size_t most) {
    const auto text = request.parameter(name);
    const auto number = text ? number_of<std::size_t>(*text) : usual;
    if (!number || *number < least || *number > most)
        throw std::invalid_argument(std::string(name) + " is a number from " +
                                    std::to_string(least) + " to " + std::to_string(most));
    return *number;
}

Answer get_state(ControlRoom& room, Request& request) {
    return Answer::json(200,
                        state_json(room, {number_in_query(request, "page", 0, 0, 1'000'000'000),
                                          number_in_query(request, "pageSize", 100, 1, 1000)}));
}

Answer get_faults(ControlRoom& room, Request&) {
    return Answer::json(200, room.service.faults.to_json());
}

/// One fault or a list of them; either all are set or none.
Answer add_faults(ControlRoom& room, Request& request) {
    const Json body = body_of(request);
    std::vector<Fault> faults;
    if (body.is_array())
        for (const Json& item : body) faults.push_back(Fault::from_json(item));
    else
        faults.push_back(Fault::from_json(body));
    for (const Fault& fault : faults)
        if (!is_step(fault.step)) throw std::invalid_argument("unknown step: " + fault.step);
    for (Fault& fault : faults) room.service.faults.add(std::move(fault));
    return get_faults(room, request);
}

Answer clear_faults(ControlRoom& room, Request&) {
    room.service.faults.clear();
    return Answer::empty(204);
}

Answer reset(ControlRoom& room, Request&) {
    room.service.options = room.started_with;
    room.service.reset();
    room.limiter.clear();
    room.log.clear();
    return Answer::empty(204);
}

/// `{"advance_ms": 600000}`
Answer move_clock(ControlRoom& room, Request& request) {
    const Json body = body_of(request);
    if (!body.is_object() || !body.contains("advance_ms") ||
        !body["advance_ms"].is_number_integer())
        throw std::invalid_argument("advance_ms is needed, a whole number of milliseconds");
    const auto step_ms = body["advance_ms"].get<std::int64_t>();
    constexpr std::int64_t ten_years_ms = 10LL * 366 * 24 * 3600 * 1000;
    if (step_ms < 0 || step_ms > ten_years_ms)
        throw std::invalid_argument("the clock moves forward, by at most ten years");
    room.service.clock.advance(std::chrono::milliseconds(step_ms));
    settle(room.service);
    return Answer::json(200, {{"now", room.service.time_text(room.service.now())}});
}

struct NamedPace {
    const char* name;
    Pace Options::*pace;
};

constexpr NamedPace paces[] = {{"authentication", &Options::authentication},
                               {"invoice", &Options::invoice_accepted},
                               {"invoice_processing", &Options::invoice_processing},
                               {"session", &Options::session_closing}};

void read_pace(const std::string& name, const Json& given, Pace& pace) {
    if (!given.is_object()) throw std::invalid_argument("a pace is a JSON object: " + name);
    for (const auto& [member, value] : given.items()) {
        const bool delay = member == "delay_ms";
        if (!delay && member != "polls")
            throw std::invalid_argument("a pace has delay_ms and polls, not " + member);
        const int most = delay ? longest_delay_ms : most_polls;
        if (!value.is_number_integer() || !is_within(value.get<std::int64_t>(), most))
            throw std::invalid_argument(member + " is a whole number from 0 to " +
                                        std::to_string(most));
        (delay ? pace.delay_ms : pace.polls) = value.get<int>();
    }
}

/// `{"authentication": {"polls": 2}, "invoice": {"delay_ms": 50}}`; what is not named stays. All
/// of it or nothing.
Answer set_pace(ControlRoom& room, Request& request) {
    const Json body = body_of(request);
    if (!body.is_object()) throw std::invalid_argument("paces are a JSON object");
    Options changed = room.service.options;
    for (const auto& [name, given] : body.items()) {
        const auto* known =
            std::find_if(std::begin(paces), std::end(paces),
                         [&wanted = name](const NamedPace& it) { return wanted == it.name; });
        if (known == std::end(paces)) throw std::invalid_argument("no pace of that name: " + name);
        read_pace(name, given, changed.*known->pace);
    }
    room.service.options = std::move(changed);
    Json answer = Json::object();
    for (const auto& [name, member] : paces) {
        const Pace& pace = room.service.options.*member;
        answer[name] = {{"delay_ms", pace.delay_ms}, {"polls", pace.polls}};
    }
    return Answer::json(200, answer);
}

/// `{"usage": "KsefTokenEncryption"}`, or both usages when none is named.
Answer rotate_keys(ControlRoom& room, Request& request) {
    const Json body = body_of(request);
    const bool one = body.is_object() && body.contains("usage");
    const std::string usage =
        one && body["usage"].is_string() ? body["usage"].get<std::string>() : "";
    if (one && usage != token_usage && usage != symmetric_key_usage)
        throw std::invalid_argument("usage is KsefTokenEncryption or SymmetricKeyEncryption");
    Service& service = room.service;
    for (const std::string_view each : {token_usage, symmetric_key_usage})
        if (!one || usage == each) service.keys.rotate(each, service.now());
    service.save_keys();
    return Answer::json(200, service.keys.published(service.now(), service.options.time));
}

std::string text_or_nothing(const Json& body, const char* name) {
    return body.contains(name) ? body[name].get<std::string>() : std::string();
}

/// `{"certificate": "-----BEGIN ...", "nip": "5265877635", "type": "Offline"}`
Answer add_certificate(ControlRoom& room, Request& request) {
    const Json body = body_of(request);
    CertificateClaim claim{text_or_nothing(body, "certificate"), text_or_nothing(body, "nip"),
                           text_or_nothing(body, "name"), text_or_nothing(body, "type")};
    claim.revoked = body.value("revoked", false);
    return Answer::json(200,
                        certificate_json(room.service, register_certificate(room.service, claim)));
}

/// `{"xml": "..."}`, or `{"buyer": "7352765225", "seller": "5265877635", "count": 250}`
Answer add_purchases(ControlRoom& room, Request& request) {
    const Json body = body_of(request);
    constexpr int most = 20'000;
    Purchases purchases{text_or_nothing(body, "xml"), text_or_nothing(body, "seller"),
                        text_or_nothing(body, "buyer"), text_or_nothing(body, "buyer_unit")};
    purchases.count = body.value("count", 1);
    if (purchases.count < 1 || purchases.count > most)
        throw std::invalid_argument("count is from 1 to 20000");
    if (!purchases.xml.empty() && purchases.count != 1)
        throw std::invalid_argument("a document is accepted once");
    if (purchases.xml.empty() && (!is_nip(purchases.buyer) || !is_nip(purchases.seller)))
        throw std::invalid_argument("buyer and seller are tax numbers, or xml is a document");
    return Answer::json(200, {{"ksefNumbers", add_purchases(room.service, purchases)}});
}

const Invoice& invoice_named(ControlRoom& room, const Request& request) {
    const Invoice* invoice = look_up(room.service.state.invoices, request.parameters.at(0));
    if (invoice == nullptr) throw std::invalid_argument("no such invoice");
    return *invoice;
}

// Files, so that a browser runs no script that a stranger's document carries: here it could steer.
Answer invoice_xml(ControlRoom& room, Request& request) {
    const Invoice& invoice = invoice_named(room, request);
    return download(invoice.xml, invoice.reference + ".xml");
}

Answer invoice_upo_document(ControlRoom& room, Request& request) {
    const Invoice& invoice = invoice_named(room, request);
    return download(invoice.upo, "UPO-" + invoice.reference + ".xml");
}

struct ControlRoute {
    std::string_view method;
    std::string_view pattern;
    Answer (*handler)(ControlRoom&, Request&);
};

constexpr ControlRoute control_routes[] = {
    {"GET", "/sandbox/state", get_state},
    {"GET", "/sandbox/faults", get_faults},
    {"POST", "/sandbox/faults", add_faults},
    {"DELETE", "/sandbox/faults", clear_faults},
    {"POST", "/sandbox/reset", reset},
    {"POST", "/sandbox/clock", move_clock},
    {"POST", "/sandbox/pace", set_pace},
    {"POST", "/sandbox/keys/rotate", rotate_keys},
    {"POST", "/sandbox/certificates", add_certificate},
    {"POST", "/sandbox/purchases", add_purchases},
    {"GET", "/sandbox/invoices/{}/xml", invoice_xml},
    {"GET", "/sandbox/invoices/{}/upo", invoice_upo_document},
};

}  // namespace

Answer control(ControlRoom& room, Request& request) {
    bool path_known = false;
    for (const ControlRoute& route : control_routes) {
        if (!match_path(route.pattern, request.path, request.parameters)) continue;
        path_known = true;
        if (route.method != request.method) continue;
        try {
            return route.handler(room, request);
        } catch (const std::invalid_argument& error) {
            return Answer::json(400, {{"error", error.what()}});
        } catch (const Json::exception& error) {
            return Answer::json(400, {{"error", error.what()}});
        }
    }
    return Answer::empty(path_known ? 405 : 404);
}

}  // namespace tavrix::sandbox
