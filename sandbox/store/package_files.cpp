#include "sandbox/store/package_files.h"

#include <fstream>
#include <stdexcept>

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/path.h"

namespace tavrix::sandbox {

namespace fs = std::filesystem;

PackageFiles::PackageFiles(const fs::path& data_folder)
    : root_(data_folder.empty() ? fs::temp_directory_path() / ("tavrix-sandbox-" + random_hex(16))
                                : data_folder / "packages"),
      temporary_(data_folder.empty()) {}

PackageFiles::~PackageFiles() {
    std::error_code ignored;
    if (temporary_) fs::remove_all(root_, ignored);
}

fs::path PackageFiles::part(const std::string& session, int ordinal) const {
    return root_ / session / ("part-" + std::to_string(ordinal));
}

fs::path PackageFiles::archive(const std::string& session) const {
    return root_ / session / "archive";
}

void PackageFiles::write_part(const std::string& session, int ordinal,
                              std::string_view content) const {
    const fs::path file = part(session, ordinal), partial = fs::path(file) += ".partial";
    fs::create_directories(file.parent_path());
    // Invoices are nobody else's business.
    fs::permissions(root_, fs::perms::owner_all);
    std::ofstream stream(partial, std::ios::binary | std::ios::trunc);
    stream.write(content.data(), std::streamsize(content.size()));
    stream.close();
    if (!stream) {
        fs::remove(partial);
        throw std::runtime_error("a part could not be written to " + utf8_of(file));
    }
    fs::rename(partial, file);
}

std::optional<std::int64_t> PackageFiles::part_size(const std::string& session, int ordinal) const {
    std::error_code missing;
    const auto size = fs::file_size(part(session, ordinal), missing);
    if (missing) return std::nullopt;
    return std::int64_t(size);
}

void PackageFiles::remove(const std::string& session) const {
    fs::remove_all(root_ / session);
}

void PackageFiles::keep_only(const std::set<std::string>& sessions) const {
    if (!fs::exists(root_)) return;
    for (const auto& entry : fs::directory_iterator(root_))
        if (!sessions.contains(utf8_of(entry.path().filename()))) fs::remove_all(entry.path());
}

}  // namespace tavrix::sandbox
