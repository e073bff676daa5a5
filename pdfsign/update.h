#pragma once

#include <map>

#include "pdfsign/object_text.h"
#include "pdfsign/pdf_source.h"

namespace tavrix::pdfsign {

/// An incremental update (ISO 32000-2, 7.5.6): what is written behind a document, whose own bytes
/// stay as they are.
class Update {
  public:
    /// `size` is the document's in bytes. Throws when the document leaves no way to add to it.
    Update(QPDF& document, const FileEnds& ends, std::uint64_t size, const Encryption& encryption);

    /// A new object's number; put it.
    QPDFObjGen reserve();
    /// `body` as it stands between "obj" and "endobj". Gives where it begins in `text`.
    std::size_t put(QPDFObjGen object, std::string_view body);
    /// A changed object, under its old number.
    void put(QPDFObjGen object, QPDFObjectHandle changed);
    /// `entries` is the stream's dictionary without brackets and length.
    void put_stream(QPDFObjGen object, std::string_view entries, std::string_view content);
    /// The cross-reference section of the kind that the document ends with, because readers that
    /// find the other one repair the file in memory and then refuse its signatures; and the
    /// trailer. `new_identifier` becomes the second half of the document's.
    void finish(base::ByteView new_identifier);

    std::string text;

  private:
    /// The trailer's entries besides those that only one kind of section has.
    std::string trailer(base::ByteView new_identifier);
    void write_table(const std::string& entries);
    void write_stream(const std::string& entries);
    /// Calls `first(number, count)` for each run of consecutive numbers and `each(generation,
    /// offset)` for its objects.
    template <typename First, typename Each>
    void for_each_run(First first, Each each) const;

    QPDF& document_;
    FileEnds ends_;
    std::uint64_t begins_;
    const Encryption& encryption_;
    int next_number_;
    struct Place {
        int generation;
        std::uint64_t offset;
    };
    std::map<int, Place> objects_;
};

}  // namespace tavrix::pdfsign
