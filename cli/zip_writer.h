#pragma once

#include <string>

#include "ports/files.h"

namespace tavrix::cli {

/// Writes a ZIP archive (PKWARE APPNOTE 6.3.10) that only depends on the names and bytes of its
/// entries: deflated, flat, all of the same date, no comments and no extra fields. Throws
/// base::AutomationError for an archive beyond 4 GiB, which this form cannot hold.
class ZipWriter {
  public:
    explicit ZipWriter(ports::FileWriter& file) : file_(file) {}
    void add(const std::string& name, base::ByteView content);
    /// The directory, which ends the archive. Gives its size.
    std::uint64_t finish();

  private:
    void write(base::ByteView bytes);

    ports::FileWriter& file_;
    std::uint64_t written_ = 0;
    std::string directory_;
    std::uint16_t entries_ = 0;
};

}  // namespace tavrix::cli
