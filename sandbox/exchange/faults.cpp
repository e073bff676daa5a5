#include "sandbox/exchange/faults.h"

#include <algorithm>
#include <stdexcept>

namespace tavrix::sandbox {
namespace {

using Mode = Delivery::Mode;

struct Kind {
    FaultKind kind;
    std::string_view name;
    /// The operation does not run when this hits.
    bool prevents_handling;
    Mode mode = Mode::whole;
};

constexpr Kind kinds[] = {
    {FaultKind::refuse, "refuse", true, Mode::drop},
    {FaultKind::drop, "drop", false, Mode::drop},
    {FaultKind::reset, "reset", false, Mode::reset},
    {FaultKind::cut, "cut", false, Mode::cut},
    {FaultKind::hang, "hang", true, Mode::hang},
    {FaultKind::delay, "delay", false},
    {FaultKind::drip, "drip", false, Mode::drip},
    {FaultKind::status, "status", true},
    {FaultKind::too_many, "429", true},
    {FaultKind::malformed, "malformed", true},
    {FaultKind::truncated, "truncated", false},
    {FaultKind::html, "html", true},
    {FaultKind::empty, "empty", true},
    {FaultKind::json, "json", false},
    {FaultKind::remove, "remove", false},
    {FaultKind::header, "header", false},
    {FaultKind::escape, "escape", false},
    {FaultKind::verdict, "verdict", false},
};

const Kind& entry_of(FaultKind kind) {
    return *std::find_if(std::begin(kinds), std::end(kinds),
                         [kind](const Kind& entry) { return entry.kind == kind; });
}

FaultKind kind_named(const std::string& name) {
    for (const Kind& entry : kinds)
        if (entry.name == name) return entry.kind;
    throw std::invalid_argument("unknown kind of fault: " + name);
}

bool edits_answer(FaultKind kind) {
    return kind == FaultKind::json || kind == FaultKind::remove || kind == FaultKind::header ||
           kind == FaultKind::escape;
}

bool is_processing(std::string_view step) {
    return step.starts_with("processing/");
}

constexpr std::pair<std::string_view, int Fault::*> numbers[] = {
    {"skip", &Fault::skip},
    {"count", &Fault::count},
    {"status", &Fault::status},
    {"retry_after", &Fault::retry_after_s},
    {"delay_ms", &Fault::delay_ms},
    {"bytes", &Fault::bytes},
    {"interval_ms", &Fault::interval_ms},
    {"code", &Fault::code},
};

constexpr std::pair<std::string_view, std::string Fault::*> texts[] = {
    {"step", &Fault::step}, {"type", &Fault::content_type},       {"path", &Fault::path},
    {"name", &Fault::name}, {"description", &Fault::description},
};

std::string text_of(const std::string& name, const Json& value) {
    if (!value.is_string()) throw std::invalid_argument("not a text: " + name);
    return value.get<std::string>();
}

void read_member(Fault& fault, const std::string& name, const Json& value) {
    for (const auto& [known, member] : numbers) {
        if (name != known) continue;
        const auto number = whole_number(value);
        if (!number || !std::in_range<int>(*number))
            throw std::invalid_argument("not a number: " + name);
        fault.*member = int(*number);
        return;
    }
    for (const auto& [known, member] : texts) {
        if (name != known) continue;
        fault.*member = text_of(name, value);
        return;
    }
    if (name == "kind")
        fault.kind = kind_named(text_of(name, value));
    else if (name == "body")
        fault.body = value.is_string() ? value.get<std::string>() : dump(value);
    else if (name == "value")
        fault.value = value;
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
    auto body = read_json(answer.body);
    if (!body) return;
    if (fault.kind == FaultKind::json)
        set_at_path(*body, fault.path, fault.value);
    else
        remove_at_path(*body, fault.path);
    answer.body = dump(*body);
}

/// As some of the service's answers come.
void escape(Answer& answer) {
    if (const auto body = read_json(answer.body))
        answer.body = body->dump(-1, ' ', true, Json::error_handler_t::replace);
}

constexpr const char* firewall_page =
    "<!DOCTYPE html><html><head><title>Request blocked</title></head><body><h1>Request blocked</h1>"
    "<p>The requested URL was rejected. Please consult your administrator.</p></body></html>";

/// The answer of a fault that has one of its own, or the proper answer spoilt.
void replace(const Fault& fault, const RefusalWriter& write, Answer& answer) {
    const auto body_or = [&](const char* usual) { return fault.body.empty() ? usual : fault.body; };
    if (fault.kind == FaultKind::status)
        answer = {fault.status, fault.body.empty() ? "" : fault.content_type, fault.body, {}};
    else if (fault.kind == FaultKind::too_many)
        answer = write(too_many_requests(20, "minutę", fault.retry_after_s));
    else if (fault.kind == FaultKind::malformed)
        answer = {200, "application/json", body_or("{\"status\": {code:"), {}};
    else if (fault.kind == FaultKind::truncated)
        answer.body.resize(answer.body.size() / 2);
    else if (fault.kind == FaultKind::html)
        answer = Answer::html(body_or(firewall_page));
    else if (fault.kind == FaultKind::empty)
        answer = Answer::empty(200);
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
        fault[name] = Json(value);
        if (name != "value") continue;
        if (const auto parsed = read_json(value)) fault[name] = *parsed;
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
    return std::any_of(faults.begin(), faults.end(),
                       [](const Fault& fault) { return entry_of(fault.kind).prevents_handling; });
}

Delivery apply_faults(const std::vector<Fault>& faults, const RefusalWriter& write,
                      Answer& answer) {
    Delivery delivery;
    for (const Fault& fault : faults)
        if (edits_answer(fault.kind) && fault.kind != FaultKind::escape) edit(fault, answer);
    for (const Fault& fault : faults) {
        if (edits_answer(fault.kind)) continue;
        replace(fault, write, answer);
        delivery = {entry_of(fault.kind).mode, fault.kind == FaultKind::delay ? fault.delay_ms : 0,
                    std::size_t(fault.bytes), fault.interval_ms};
    }
    // Last: it is about how an answer is written, also one that a fault has put in place.
    for (const Fault& fault : faults)
        if (fault.kind == FaultKind::escape) escape(answer);
    return delivery;
}

}  // namespace tavrix::sandbox
