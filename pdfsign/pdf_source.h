#pragma once

#include <exception>
#include <memory>
#include <optional>
#include <qpdf/InputSource.hh>

#include "ports/files.h"

namespace tavrix::pdfsign {

/// A file as libqpdf reads it, through a small buffer: a document of any size takes no more memory.
class PdfSource final : public InputSource {
  public:
    explicit PdfSource(ports::FileReader& file);

    qpdf_offset_t findAndSkipNextEOL() override;
    std::string const& getName() const override { return name_; }
    qpdf_offset_t tell() override { return position_; }
    void seek(qpdf_offset_t offset, int whence) override;
    void rewind() override { position_ = 0; }
    std::size_t read(char* into, std::size_t length) override;
    void unreadCh(char ch) override;
    /// Throws what reading the file threw before: libqpdf takes that for a fault of the object,
    /// which it then gives as null.
    void expect_no_failure() const;

  private:
    /// What the buffer has from the position on, filled anew where it has nothing; empty at the
    /// end.
    base::ByteView ahead();

    ports::FileReader& file_;
    std::exception_ptr failure_;
    std::string name_;
    qpdf_offset_t size_;
    qpdf_offset_t position_ = 0;
    qpdf_offset_t buffered_from_ = 0;
    base::Bytes buffer_;
};

/// How a document's last cross-reference section is written down (ISO 32000-2, 7.5.4 and 7.5.8).
enum class CrossReference { table, stream };

/// What libqpdf does not tell of a document's two ends.
struct FileEnds {
    /// Where "%PDF-" stands; nothing where it does not within the first 1024 bytes.
    std::optional<std::uint64_t> header;
    /// The number behind the last "startxref", counted from the header; nothing when there is none
    /// near the end.
    std::optional<std::int64_t> last_section;
    CrossReference kind = CrossReference::table;
    /// "startxref" stands there, whatever follows it but 0.
    bool has_end = false;
    /// Behind the end of the last whole revision there is the beginning of a further one.
    bool is_cut = false;
    bool ends_with_line = false;
};

FileEnds read_ends(ports::FileReader& file);

}  // namespace tavrix::pdfsign
