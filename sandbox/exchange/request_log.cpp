#include "sandbox/exchange/request_log.h"

#include <algorithm>

namespace tavrix::sandbox {
namespace {

constexpr std::size_t longest_body = 64 * 1024, longest_answer = 16 * 1024;
constexpr std::size_t longest_text_of_large_body = 256, shown_of_it = 64;

/// Texts inside a large body, above all the encrypted invoice, are shortened and their length
/// noted. Nothing is parsed: the body is anybody's, and everybody would wait.
std::string with_short_texts(std::string_view body) {
    std::string result;
    while (!body.empty()) {
        const std::size_t begin = std::min(body.find('"'), body.size() - 1) + 1;
        result += body.substr(0, begin);
        body.remove_prefix(begin);
        std::size_t end = 0;
        while (end < body.size() && body[end] != '"') end += body[end] == '\\' ? 2 : 1;
        end = std::min(end, body.size());
        const std::string_view text = body.substr(0, end);
        if (end > longest_text_of_large_body) {
            std::size_t cut = std::min(text.find('\\'), shown_of_it);
            while (cut > 0 && (text[cut] & 0xC0) == 0x80) --cut;
            result.append(text.substr(0, cut)) += "... (" + std::to_string(end) + " characters)";
        } else {
            result += text;
        }
        body.remove_prefix(end);
        if (!body.empty()) {
            result += '"';
            body.remove_prefix(1);
        }
    }
    return result;
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
        entry.body = with_short_texts(entry.body);
        // A body of very many short texts is still large.
        if (entry.body.size() > longest_body) entry.body.resize(longest_body);
    }
    if (entry.answer.size() > longest_answer) entry.answer.resize(longest_answer);
    entries_.push_back(std::move(entry));
    while (entries_.size() > capacity_) entries_.pop_front();
}

const LoggedRequest* RequestLog::find(std::uint64_t number) const {
    if (entries_.empty() || number < entries_.front().number || number > total_) return nullptr;
    return &entries_[std::size_t(number - entries_.front().number)];
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
