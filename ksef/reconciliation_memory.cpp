#include "ksef/reconciliation_memory.h"

#include <algorithm>
#include <set>

#include "base/error.h"

namespace tavrix::ksef {
namespace {

constexpr base::TextView memory_file = u"Tavrix.reconciled.json";
constexpr std::size_t longest_memory = 1 << 20;
constexpr std::size_t date_length = 10;

}  // namespace

ReconciliationMemory::ReconciliationMemory(const KsefPorts& ports, const Client& client,
                                           const base::Text& tax_number)
    : ports_(ports), key_(base::to_utf8(client.base_url + u" " + tax_number)) {
    if (ports.settings_folder.empty()) return;
    path_ = ports.settings_folder + base::Text(memory_file);
    if (!ports.files.is_file(path_)) return;
    try {
        const base::Bytes bytes = read_whole(ports.files, path_, longest_memory);
        if (Json kept = parse_json(base::chars_of(bytes)); kept.is_object())
            kept_ = std::move(kept);
    } catch (const base::AutomationError&) {
        // All sessions are looked at again, which changes nothing that is right.
    }
    if (const auto found = kept_.find(key_); found != kept_.end() && found->is_string()) {
        newest_ = found->get<std::string>();
    }
}

std::string ReconciliationMemory::changed_from() const {
    const auto day = base::parse_date_time(base::from_utf8(newest_.substr(0, date_length)));
    if (!day) return {};
    const std::int64_t before = base::days_from_civil(day->year, day->month, day->day) - 1;
    return base::to_utf8(base::format_date(base::civil_from_days(before))) + "T00:00:00Z";
}

// All moments of a service have the same form, so the later one is the greater text.
void ReconciliationMemory::saw(const std::string& changed) {
    newest_ = std::max(newest_, changed);
}

void ReconciliationMemory::keep() {
    if (path_.empty() || newest_.empty()) return;
    kept_[key_] = newest_;
    const auto file = ports_.files.create(path_, ports::Readers::everyone);
    const std::string text = kept_.dump(-1, ' ', false, Json::error_handler_t::replace);
    file->write(base::bytes_of(text));
    file->keep();
}

// The file grows with every package, so it passes through a buffer and leaves only what is asked
// for.
std::map<std::string, std::vector<ManifestEntry>> noted_of(
    const KsefPorts& ports, const std::vector<std::string>& sessions) {
    std::map<std::string, std::vector<ManifestEntry>> noted;
    const base::Text path = ports.settings_folder + base::Text(sent_packages);
    if (ports.settings_folder.empty() || !ports.files.is_file(path)) return noted;
    const std::set<std::string> wanted(sessions.begin(), sessions.end());
    const auto file = ports.files.open(path);
    base::Bytes buffer(1 << 16);
    std::string lines;
    for (std::size_t size = buffer.size(); size == buffer.size();) {
        size = file->read(buffer);
        lines += base::chars_of(base::ByteView(buffer).first(size));
        const bool is_last = size < buffer.size();
        const std::size_t whole = is_last ? lines.size() : lines.rfind('\n') + 1;
        for (ManifestEntry& entry : read_manifest(std::string_view(lines).substr(0, whole))) {
            if (wanted.contains(entry.session)) noted[entry.session].push_back(std::move(entry));
        }
        lines.erase(0, whole);
    }
    return noted;
}

}  // namespace tavrix::ksef
