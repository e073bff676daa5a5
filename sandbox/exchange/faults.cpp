#include "sandbox/exchange/faults.h"

#include <array>
#include <charconv>
#include <stdexcept>

namespace tavrix::sandbox {
namespace {

struct KindName {
    FaultKind kind;
    std::string_view name;
    /// The operation does not run when this hits.
    bool prevents_handling;
};

constexpr KindName kinds[] = {
    {FaultKind::refuse, "refuse", true},
    {FaultKind::drop, "drop", false},
    {FaultKind::reset, "reset", false},
    {FaultKind::cut, "cut", false},
    {FaultKind::hang, "hang", true},
    {FaultKind::delay, "delay", false},
    {FaultKind::drip, "drip", false},
    {FaultKind::status, "status", true},
    {FaultKind::too_many, "429", true},
    {FaultKind::malformed, "malformed", true},
    {FaultKind::truncated, "truncated", false},
    {FaultKind::html, "html", true},
    {FaultKind::empty, "empty", true},
    {FaultKind::json, "json", false},
    {FaultKind::remove, "remove", false},
    {FaultKind::header, "header", false},
    {FaultKind::verdict, "verdict", false},
};

const KindName& entry_of(FaultKind kind) {
    for (const KindName& entry : kinds)
        if (entry.kind == kind) return entry;
    throw std::invalid_argument("no such fault");
}

FaultKind kind_named(std::string_view name) {
    for (const KindName& entry : kinds)
        if (entry.name == name) return entry.kind;
    throw std::invalid_argument("unknown kind of fault: " + std::string(name));
}

bool edits_answer(FaultKind kind) {
    return kind == FaultKind::json || kind == FaultKind::remove || kind == FaultKind::header;
}

bool is_processing(std::string_view step) {
    return step.starts_with("processing/");
}

/// A number, which a command line or a careless client may write as text.
int integer(const std::string& name, const Json& value) {
    if (value.is_number_integer()) return value.get<int>();
    if (value.is_string()) {
        const auto& text = value.get_ref<const std::string&>();
        int result = 0;
        const auto read = std::from_chars(text.data(), text.data() + text.size(), result);
        if (read.ec == std::errc() && read.ptr == text.data() + text.size()) return result;
    }
    throw std::invalid_argument("not a number: " + name);
}

std::string string_of(const std::string& name, const Json& value) {
    if (!value.is_string()) throw std::invalid_argument("not a text: " + name);
    return value.get<std::string>();
}

void read_member(Fault& fault, const std::string& name, const Json& value) {
    if (name == "step")
        fault.step = string_of(name, value);
    else if (name == "kind")
        fault.kind = kind_named(string_of(name, value));
    else if (name == "skip")
        fault.skip = integer(name, value);
    else if (name == "count")
        fault.count = integer(name, value);
    else if (name == "status")
        fault.status = integer(name, value);
    else if (name == "body")
        fault.body = value.is_string() ? value.get<std::string>() : dump(value);
    else if (name == "type")
        fault.content_type = string_of(name, value);
    else if (name == "retry_after")
        fault.retry_after_s = integer(name, value);
    else if (name == "delay_ms")
        fault.delay_ms = integer(name, value);
    else if (name == "bytes")
        fault.bytes = integer(name, value);
    else if (name == "interval_ms")
        fault.interval_ms = integer(name, value);
    else if (name == "path")
        fault.path = string_of(name, value);
    else if (name == "value")
        fault.value = value;
    else if (name == "name")
        fault.name = string_of(name, value);
    else if (name == "code")
        fault.code = integer(name, value);
    else if (name == "description")
        fault.description = string_of(name, value);
    else if (name == "details")
        fault.details = value.is_string() ? std::vector{value.get<std::string>()}
                                          : value.get<std::vector<std::string>>();
    else
        throw std::invalid_argument("unknown member of a fault: " + name);
}

void check(const Fault& fault) {
    if (fault.step.empty()) throw std::invalid_argument("a fault needs a step");
    if (fault.kind == FaultKind::json || fault.kind == FaultKind::remove) check_path(fault.path);
    if (fault.kind == FaultKind::header && (fault.name.empty() || !fault.value.is_string()))
        throw std::invalid_argument("a header fault needs a name and a value");
    if ((fault.kind == FaultKind::verdict) != is_processing(fault.step))
        throw std::invalid_argument(
            "a verdict belongs to a processing step, and nothing else does");
    if (fault.kind == FaultKind::verdict && fault.code <= 0)
        throw std::invalid_argument("a verdict needs a code");
    if (fault.status < 100 || fault.status > 999)
        throw std::invalid_argument("no HTTP status: status");
    if (fault.bytes < 1 || fault.delay_ms < 0 || fault.interval_ms < 0 || fault.skip < 0)
        throw std::invalid_argument("bytes, delay_ms, interval_ms and skip cannot be below zero");
}

void edit(const Fault& fault, Answer& answer) {
    if (fault.kind == FaultKind::header) {
        std::erase_if(answer.headers,
                      [&](const auto& header) { return header.first == fault.name; });
        answer.headers.emplace_back(fault.name, fault.value.get<std::string>());
        return;
    }
    Json body = Json::parse(answer.body, nullptr, false);
    if (body.is_discarded()) return;
    if (fault.kind == FaultKind::json)
        set_at_path(body, fault.path, fault.value);
    else
        remove_at_path(body, fault.path);
    answer.body = dump(body);
}

Answer too_many_requests(int retry_after_s) {
    const std::string text = "Przekroczono limit 20 żądań na minutę. Spróbuj ponownie po " +
                             std::to_string(retry_after_s) + " sekundach.";
    Answer answer = Answer::json(429, {{"status",
                                        {{"code", 429},
                                         {"description", "Too Many Requests"},
                                         {"details", Json::array({text})}}}});
    answer.headers.emplace_back("Retry-After", std::to_string(retry_after_s));
    return answer;
}

constexpr const char* firewall_page =
    "<!DOCTYPE html><html><head><title>Request blocked</title></head><body><h1>Request blocked</h1>"
    "<p>The requested URL was rejected. Please consult your administrator.</p></body></html>";

Delivery apply(const Fault& fault, Answer& answer) {
    using Mode = Delivery::Mode;
    Delivery delivery;
    delivery.piece_bytes = std::size_t(fault.bytes);
    delivery.interval_ms = fault.interval_ms;
    switch (fault.kind) {
        case FaultKind::refuse:
        case FaultKind::drop:
            delivery.mode = Mode::drop;
            break;
        case FaultKind::reset:
            delivery.mode = Mode::reset;
            break;
        case FaultKind::cut:
            delivery.mode = Mode::cut;
            break;
        case FaultKind::hang:
            delivery.mode = Mode::hang;
            break;
        case FaultKind::drip:
            delivery.mode = Mode::drip;
            break;
        case FaultKind::delay:
            delivery.delay_ms = fault.delay_ms;
            break;
        case FaultKind::status:
            answer = {fault.status, fault.body.empty() ? "" : fault.content_type, fault.body, {}};
            break;
        case FaultKind::too_many:
            answer = too_many_requests(fault.retry_after_s);
            break;
        case FaultKind::malformed:
            answer = {200,
                      "application/json",
                      fault.body.empty() ? "{\"status\": {code:" : fault.body,
                      {}};
            break;
        case FaultKind::truncated:
            answer.body.resize(answer.body.size() / 2);
            break;
        case FaultKind::html:
            answer = Answer::html(fault.body.empty() ? firewall_page : fault.body);
            break;
        case FaultKind::empty:
            answer = Answer::empty(200);
            break;
        case FaultKind::json:
        case FaultKind::remove:
        case FaultKind::header:
            edit(fault, answer);
            break;
        case FaultKind::verdict:
            break;
    }
    return delivery;
}

}  // namespace

std::string_view to_string(FaultKind kind) {
    return entry_of(kind).name;
}

Fault Fault::from_json(const Json& json) {
    if (!json.is_object()) throw std::invalid_argument("a fault is a JSON object");
    Fault fault;
    for (const auto& [name, value] : json.items()) read_member(fault, name, value);
    check(fault);
    return fault;
}

Json Fault::to_json() const {
    return {{"step", step}, {"kind", to_string(kind)},
            {"skip", skip}, {"count", count},
            {"seen", seen}, {"hits", hits}};
}

Json parse_fault_text(std::string_view text) {
    Json fault = Json::object();
    std::size_t at = 0;
    while ((at = text.find_first_not_of(' ', at)) != std::string_view::npos) {
        const std::size_t equals = text.find('=', at);
        if (equals == std::string_view::npos)
            throw std::invalid_argument("no value: " + std::string(text.substr(at)));
        const std::string name(text.substr(at, equals - at));
        std::size_t from = equals + 1, to = 0;
        if (from < text.size() && (text[from] == '\'' || text[from] == '"')) {
            to = text.find(text[from], from + 1);
            if (to == std::string_view::npos)
                throw std::invalid_argument("no closing quote: " + name);
            ++from;
            at = to + 1;
        } else {
            to = at = std::min(text.find(' ', from), text.size());
        }
        const std::string value(text.substr(from, to - from));
        const Json parsed = name == "value" ? Json::parse(value, nullptr, false) : Json(value);
        fault[name] = parsed.is_discarded() ? Json(value) : parsed;
    }
    return fault;
}

std::vector<Fault> FaultList::take(std::string_view step) {
    std::vector<Fault> due;
    bool settled = false;
    for (Fault& fault : faults_) {
        if (fault.step != step && (fault.step != "*" || is_processing(step))) continue;
        ++fault.seen;
        if (fault.seen <= fault.skip || (fault.count >= 0 && fault.hits >= fault.count)) continue;
        if (!edits_answer(fault.kind)) {
            if (settled) continue;
            settled = true;
        }
        ++fault.hits;
        due.push_back(fault);
    }
    return due;
}

Json FaultList::to_json() const {
    Json list = Json::array();
    for (const Fault& fault : faults_) list.push_back(fault.to_json());
    return list;
}

bool prevents_handling(const std::vector<Fault>& faults) {
    for (const Fault& fault : faults)
        if (entry_of(fault.kind).prevents_handling) return true;
    return false;
}

Delivery apply_faults(const std::vector<Fault>& faults, Answer& answer) {
    Delivery delivery;
    for (const Fault& fault : faults)
        if (edits_answer(fault.kind)) apply(fault, answer);
    for (const Fault& fault : faults)
        if (!edits_answer(fault.kind)) delivery = apply(fault, answer);
    return delivery;
}

}  // namespace tavrix::sandbox
