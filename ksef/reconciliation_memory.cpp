#include "ksef/reconciliation_memory.h"

#include <algorithm>
#include <set>

#include "base/error.h"

namespace tavrix::ksef {
namespace {

using base::Text;

constexpr base::TextView memory_file = u"Tavrix.reconciled.json";
constexpr std::size_t longest_memory = 4 << 20;
constexpr std::size_t longest_line = 1 << 20;
constexpr std::size_t date_length = 10;

// Where something may be kept, the better place first.
std::vector<Text> folders_of(const KsefPorts& ports) {
    std::vector<Text> folders{ports.settings_folder, ports.user_folder};
    std::erase(folders, Text());
    return folders;
}

// Null when it is not there or cannot be read: all sessions are looked at again then, which changes
// nothing that is right.
Json read_memory(const KsefPorts& ports, const Text& path) {
    try {
        if (!ports.files.is_file(path)) return nullptr;
        return parse_json(base::chars_of(read_whole(ports.files, path, longest_memory)));
    } catch (const base::AutomationError&) {
        return nullptr;
    }
}

const Json& member(const Json& object, const std::string& name) {
    static const Json none;
    const auto found = object.is_object() ? object.find(name) : object.end();
    return found == object.end() ? none : *found;
}

// Gathers the notes of some packages, line by line in the order in which they were sent.
class Notes {
  public:
    explicit Notes(const std::vector<std::string>& sessions)
        : wanted_(sessions.begin(), sessions.end()) {}

    // The file grows with every package, so it passes through a buffer and leaves only what is
    // asked for.
    void read(ports::FileReader& file) {
        base::Bytes buffer(1 << 16);
        std::string lines;
        for (std::size_t size = buffer.size(); size == buffer.size();) {
            size = file.read(buffer);
            lines += base::chars_of(base::ByteView(buffer).first(size));
            const bool is_last = size < buffer.size();
            const std::size_t whole = is_last ? lines.size() : lines.rfind('\n') + 1;
            for (ManifestEntry& entry : read_manifest(std::string_view(lines).substr(0, whole))) {
                add(std::move(entry));
            }
            lines.erase(0, whole);
            // What is so long is no note, and neither is its end.
            if (lines.size() > longest_line) lines.clear();
        }
    }

    NotedPackages take() {
        for (auto& [session, invoices] : packages_.by_session) {
            for (NotedInvoice& invoice : invoices) {
                invoice.was_sent_again = last_session_[document(invoice.entry)] != session;
            }
        }
        return std::move(packages_);
    }

    void miss() { packages_.is_whole = false; }

  private:
    using Document = std::pair<Text, std::int32_t>;
    static Document document(const ManifestEntry& entry) { return {entry.table, entry.ddout_id}; }

    void add(ManifestEntry entry) {
        const bool is_wanted = wanted_.contains(entry.session);
        const auto known = last_session_.find(document(entry));
        if (known != last_session_.end()) known->second = entry.session;
        if (!is_wanted) return;
        last_session_.insert_or_assign(document(entry), entry.session);
        packages_.by_session[entry.session].push_back({std::move(entry)});
    }

    std::set<std::string> wanted_;
    std::map<Document, std::string> last_session_;
    NotedPackages packages_;
};

}  // namespace

ReconciliationMemory::ReconciliationMemory(const KsefPorts& ports, std::string whose)
    : ports_(ports), whose_(std::move(whose)) {
    for (const Text& folder : folders_of(ports_)) {
        recall(member(read_memory(ports_, folder + Text(memory_file)), whose_));
    }
}

// Of two files the one that came further holds.
void ReconciliationMemory::recall(const Json& kept) {
    const std::string newest = utf8_at(kept, "newest");
    if (newest <= newest_) return;
    newest_ = newest;
    done_.clear();
    left_out_.clear();
    for (const auto& [reference, changed] : member(kept, "done").items()) {
        if (changed.is_string()) done_[reference] = changed.get<std::string>();
    }
    for (const auto& [reference, session] : member(kept, "left_out").items()) {
        const Json& code = member(session, "code");
        left_out_[reference] = {reference, code.is_number_integer() ? code.get<int>() : 0,
                                utf8_at(session, "changed")};
    }
}

std::string ReconciliationMemory::changed_from() const {
    const auto day = base::parse_date_time(base::from_utf8(newest_.substr(0, date_length)));
    if (!day) return {};
    const std::int64_t before = base::days_from_civil(day->year, day->month, day->day) - 1;
    return base::to_utf8(base::format_date(base::civil_from_days(before))) + "T00:00:00Z";
}

bool ReconciliationMemory::is_done(const FinishedSession& session) const {
    const auto known = done_.find(session.reference);
    return known != done_.end() && known->second == session.changed;
}

// All moments of a service have the same form, so the later one is the greater text.
void ReconciliationMemory::done(const FinishedSession& session) {
    newest_ = std::max(newest_, session.changed);
    left_out_.erase(session.reference);
    done_[session.reference] = session.changed;
}

void ReconciliationMemory::left_out(const FinishedSession& session) {
    newest_ = std::max(newest_, session.changed);
    done_.erase(session.reference);
    left_out_[session.reference] = session;
}

Json ReconciliationMemory::entry() const {
    Json entry{{"newest", newest_}, {"done", Json::object()}, {"left_out", Json::object()}};
    const std::string from = changed_from();
    for (const auto& [reference, changed] : done_) {
        if (changed >= from) entry["done"][reference] = changed;
    }
    for (const auto& [reference, session] : left_out_) {
        entry["left_out"][reference] = {{"code", session.code}, {"changed", session.changed}};
    }
    return entry;
}

void ReconciliationMemory::keep() {
    if (newest_.empty()) return;
    for (const Text& folder : folders_of(ports_)) {
        try {
            const Text path = folder + Text(memory_file);
            // Others keep theirs in the same file meanwhile.
            Json kept = read_memory(ports_, path);
            if (!kept.is_object()) kept = Json::object();
            kept[whose_] = entry();
            const auto file = ports_.files.create(path, ports::Readers::everyone);
            const std::string text = kept.dump(-1, ' ', false, Json::error_handler_t::replace);
            file->write(base::bytes_of(text));
            file->keep();
            return;
        } catch (const base::AutomationError&) {
            // The next folder; behind the last one nothing is kept.
        }
    }
}

NotedPackages noted_of(const KsefPorts& ports, const std::vector<std::string>& sessions) {
    Notes notes(sessions);
    for (const Text& folder : folders_of(ports)) {
        const Text path = folder + Text(sent_packages);
        if (!ports.files.is_file(path)) continue;
        try {
            notes.read(*ports.files.open_growing(path));
        } catch (const base::AutomationError&) {
            notes.miss();
        }
    }
    return notes.take();
}

void note_packages(const KsefPorts& ports, const std::vector<ManifestEntry>& entries) {
    const std::string lines = write_manifest(entries);
    const std::vector<Text> folders = folders_of(ports);
    for (const Text& folder : folders) {
        try {
            return ports.files.append(folder + Text(sent_packages), base::bytes_of(lines));
        } catch (const base::AutomationError&) {
            if (folder == folders.back()) throw;
        }
    }
}

}  // namespace tavrix::ksef
