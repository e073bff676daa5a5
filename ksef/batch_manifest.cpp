#include "ksef/batch_manifest.h"

#include <algorithm>
#include <limits>

#include "ksef/json.h"

namespace tavrix::ksef {

std::string write_manifest(const std::vector<ManifestEntry>& entries) {
    std::string text;
    for (const ManifestEntry& entry : entries) {
        Body line;
        line["session"] = entry.session;
        line["file"] = entry.file;
        line["hash"] = entry.hash;
        line["table"] = base::to_utf8(entry.table);
        line["ddout_id"] = entry.ddout_id;
        // What is no UTF-8 in a name must not keep the other invoices from their manifest.
        text += line.dump(-1, ' ', false, Body::error_handler_t::replace) + '\n';
    }
    return text;
}

std::vector<ManifestEntry> read_manifest(std::string_view text) {
    std::vector<ManifestEntry> entries;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const Json line = parse_json(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        const Json& id = json_at(line, "ddout_id");
        if (!line.is_object() || !id.is_number_integer()) continue;
        using Id = std::numeric_limits<std::int32_t>;
        const bool fits = id.is_number_unsigned()
                              ? id.get<std::uint64_t>() <= std::uint64_t{Id::max()}
                              : id.get<std::int64_t>() >= Id::min();
        if (!fits) continue;
        entries.push_back({utf8_at(line, "session"), utf8_at(line, "file"), utf8_at(line, "hash"),
                           text_at(line, "table"), id.get<std::int32_t>()});
    }
    return entries;
}

}  // namespace tavrix::ksef
