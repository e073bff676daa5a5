// The files of an archive that anybody may have made.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

struct archive;

namespace tavrix::sandbox {

/// Why an archive cannot be unpacked, in words for the status of its session.
struct ArchiveError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct ArchivedFile {
    std::string name;
    std::int64_t size = 0;
    /// SHA-256 in Base64.
    std::string hash;
    /// Empty when the file is larger than any invoice may be.
    std::string content;
    /// A folder has a name only.
    bool is_folder = false;
};

/// Reads the files of a `Zip` (ZIP64 included) or a `TarGz`, in their order, one at a time. Nothing
/// is written anywhere, names are only names. Refused, because the service's own reading of them is
/// not published and no client needs them: links, encrypted files, names that lead out of a folder,
/// are longer than the interface can carry or come twice. However little an archive takes, what it
/// unpacks to is bounded, and so are its directory and its folders.
class ArchiveReader {
  public:
    /// Throws ArchiveError for what is no archive.
    ArchiveReader(const std::filesystem::path& file, const std::string& compression);
    ~ArchiveReader();

    /// The next file or folder, or nothing after the last one. Throws ArchiveError.
    std::optional<ArchivedFile> next();

  private:
    struct Source;
    struct Release {
        void operator()(archive* handle) const;
    };

    [[noreturn]] void fail() const;
    void check_name(const std::string& name);
    ArchivedFile read_file(std::string name);

    std::unique_ptr<Source> source_;
    std::unique_ptr<archive, Release> archive_;
    std::set<std::string> names_;
    std::int64_t unpacked_ = 0;
    std::size_t folders_ = 0;
    bool empty_ = false;
};

}  // namespace tavrix::sandbox
