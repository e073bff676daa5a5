// The parts of packages, as uploaded, and the archives made of them: too large for memory, so in
// files, and of no use once the invoices have been taken out.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace tavrix::sandbox {

/// Files of a session stand in a folder of its own, named after its reference number. Failures
/// throw std::runtime_error or std::filesystem::filesystem_error.
class PackageFiles {
  public:
    /// \param data_folder where files survive a restart; when empty they stand in a temporary
    /// folder, made on first use and removed with this object.
    explicit PackageFiles(const std::filesystem::path& data_folder);
    ~PackageFiles();
    PackageFiles(const PackageFiles&) = delete;
    PackageFiles& operator=(const PackageFiles&) = delete;

    std::filesystem::path part(const std::string& session, int ordinal) const;
    std::filesystem::path archive(const std::string& session) const;
    /// Replaces an earlier upload of the same part. What fails half way leaves that one in place.
    void write_part(const std::string& session, int ordinal, std::string_view content) const;
    /// Nothing when the part was not uploaded.
    std::optional<std::int64_t> part_size(const std::string& session, int ordinal) const;
    void remove(const std::string& session) const;
    /// Removes the folders of all other sessions.
    void keep_only(const std::set<std::string>& sessions) const;

  private:
    std::filesystem::path root_;
    bool temporary_;
};

}  // namespace tavrix::sandbox
