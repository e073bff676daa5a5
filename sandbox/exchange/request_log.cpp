#include "sandbox/exchange/request_log.h"

namespace tavrix::sandbox {
namespace {

constexpr std::size_t longest_body = 64 * 1024;
constexpr std::size_t longest_text_of_large_body = 256;

/// Texts inside a large body, above all the encrypted invoice, are shortened and their length
/// noted.
void shorten_texts(Json& value) {
    if (value.is_string()) {
        auto& text = value.get_ref<std::string&>();
        if (text.size() > longest_text_of_large_body)
            text = text.substr(0, 64) + "... (" + std::to_string(text.size()) + " characters)";
    } else if (value.is_structured()) {
        for (Json& item : value) shorten_texts(item);
    }
}

/// Bodies are parsed when somebody looks, not when they come: a client's time is not spent on it.
Json body_json(const std::string& body) {
    if (body.empty()) return nullptr;
    return read_json(body).value_or(Json(body));
}

}  // namespace

void RequestLog::add(LoggedRequest entry) {
    entry.number = ++total_;
    ++counts_[entry.step];
    if (entry.body.size() > longest_body) {
        Json body = body_json(entry.body);
        shorten_texts(body);
        entry.body = body.is_string() ? body.get<std::string>() : dump(body);
        // A body of very many short texts is still large.
        if (entry.body.size() > longest_body) entry.body.resize(longest_body);
    }
    entries_.push_back(std::move(entry));
    while (entries_.size() > capacity_) entries_.pop_front();
}

void RequestLog::clear() {
    entries_.clear();
    counts_.clear();
    total_ = 0;
}

Json to_json(const LoggedRequest& entry, const TimeFormat& time) {
    const auto list = [](const auto& pairs) {
        Json items = Json::array();
        for (const auto& [name, value] : pairs) items.push_back({{"name", name}, {"value", value}});
        return items;
    };
    return {{"number", entry.number},
            {"time", time.text(entry.time)},
            {"connection", entry.connection},
            {"method", entry.method},
            {"target", entry.target},
            {"path", entry.path},
            {"query", list(entry.query)},
            {"headers", list(entry.headers)},
            {"authorization", to_string(entry.bearer)},
            {"body", body_json(entry.body)},
            {"step", entry.step},
            {"faults", entry.faults},
            {"status", entry.status},
            {"durationMs", entry.duration_ms}};
}

}  // namespace tavrix::sandbox
