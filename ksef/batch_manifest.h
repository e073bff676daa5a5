#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"

namespace tavrix::ksef {

/// One invoice of a package, and the document of the host that it was made of.
struct ManifestEntry {
    std::string session;  ///< the batch session's reference; "" until the package was sent
    std::string file;     ///< the invoice's name in the package
    std::string hash;     ///< SHA-256 of its bytes, Base64
    base::Text table;     ///< the document's table; "" when nobody knows the document
    std::int32_t ddout_id = 0;

    friend bool operator==(const ManifestEntry&, const ManifestEntry&) = default;
};

/// What was made stands beside the package, under its name with this behind it; what was sent is
/// added to the file `sent_packages` beside the settings. Both are JSON Lines, one invoice a line:
///
///     {"session":"...","file":"...","hash":"...","table":"dok_fak","ddout_id":1001}
constexpr std::u16string_view manifest_suffix = u".manifest.jsonl";
constexpr std::u16string_view sent_packages = u"Tavrix.sent-packages.jsonl";

std::string write_manifest(const std::vector<ManifestEntry>& entries);

/// The entries of `text`. A line that is none is passed over: a file that several processes add to
/// may end in half a line.
std::vector<ManifestEntry> read_manifest(std::string_view text);

}  // namespace tavrix::ksef
