#include "pdfsign/pdf_source.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <regex>
#include <stdexcept>

namespace tavrix::pdfsign {
namespace {

constexpr std::size_t buffer_bytes = 16 * 1024;
// As libqpdf looks for them.
constexpr std::size_t header_within = 1024;
constexpr std::size_t end_within = 1054;

bool is_line_end(std::uint8_t byte) {
    return byte == '\r' || byte == '\n';
}

bool is_white(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\0';
}

std::string part_of(ports::FileReader& file, std::uint64_t from, std::size_t most) {
    std::string part(most, '\0');
    file.seek(from);
    part.resize(file.read({reinterpret_cast<std::uint8_t*>(part.data()), part.size()}));
    return part;
}

struct LastSection {
    std::int64_t number;
    std::string_view behind;
};

std::optional<LastSection> last_section_in(std::string_view tail) {
    for (std::size_t at = tail.rfind("startxref"); at != tail.npos;
         at = at == 0 ? tail.npos : tail.rfind("startxref", at - 1)) {
        std::string_view rest = tail.substr(at + std::strlen("startxref"));
        while (!rest.empty() && is_white(rest.front())) rest.remove_prefix(1);
        std::int64_t number = 0;
        const auto read = std::from_chars(rest.data(), rest.data() + rest.size(), number);
        if (read.ec == std::errc{} && number > 0) {
            rest.remove_prefix(static_cast<std::size_t>(read.ptr - rest.data()));
            return LastSection{number, rest};
        }
    }
    return std::nullopt;
}

// Other junk behind a document is harmless.
bool begins_a_revision(std::string_view junk) {
    static const std::regex object_or_table(R"([0-9]\s+[0-9]+\s+obj|xref|%%EOF\s+[0-9])");
    return std::regex_search(junk.begin(), junk.end(), object_or_table);
}

// A linearized document has another one at its beginning, with the number 0.
bool says_where_it_ends(std::string_view tail) {
    const std::size_t at = tail.rfind("startxref");
    if (at == tail.npos) return false;
    const std::size_t number = tail.find_first_not_of(" \r\n", at + std::strlen("startxref"));
    return number == tail.npos || tail[number] != '0';
}

}  // namespace

PdfSource::PdfSource(ports::FileReader& file)
    : file_(file), name_("document"), size_(static_cast<qpdf_offset_t>(file.size())) {}

base::ByteView PdfSource::ahead() {
    const qpdf_offset_t within = position_ - buffered_from_;
    if (within < 0 || within >= static_cast<qpdf_offset_t>(buffer_.size())) {
        buffer_.resize(buffer_bytes);
        buffered_from_ = position_;
        try {
            file_.seek(static_cast<std::uint64_t>(position_));
            buffer_.resize(file_.read(buffer_));
        } catch (...) {
            buffer_.clear();
            failure_ = std::current_exception();
            throw;
        }
    }
    return base::ByteView(buffer_).subspan(static_cast<std::size_t>(position_ - buffered_from_));
}

// Gives where the line ends, and skips all line ends that follow.
qpdf_offset_t PdfSource::findAndSkipNextEOL() {
    qpdf_offset_t end = -1;
    for (base::ByteView part = ahead(); !part.empty(); part = ahead()) {
        if (end < 0) {
            const auto found = std::ranges::find_if(part, is_line_end) - part.begin();
            position_ += found;
            if (static_cast<std::size_t>(found) == part.size()) continue;
            end = position_;
        } else {
            const auto found = std::ranges::find_if_not(part, is_line_end) - part.begin();
            position_ += found;
            if (static_cast<std::size_t>(found) < part.size()) return end;
        }
    }
    return end < 0 ? position_ : end;
}

void PdfSource::seek(qpdf_offset_t offset, int whence) {
    const qpdf_offset_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? position_ : size_;
    if (offset < -from) throw std::runtime_error("seek before the beginning");
    position_ = from + offset;
}

std::size_t PdfSource::read(char* into, std::size_t length) {
    last_offset = position_;
    std::size_t got = 0;
    while (got < length) {
        const base::ByteView part = ahead();
        if (part.empty()) break;
        const std::size_t piece = std::min(length - got, part.size());
        std::memcpy(into + got, part.data(), piece);
        position_ += static_cast<qpdf_offset_t>(piece);
        got += piece;
    }
    return got;
}

void PdfSource::unreadCh(char /*ch*/) {
    if (position_ > 0) --position_;
}

void PdfSource::expect_no_failure() const {
    if (failure_) std::rethrow_exception(failure_);
}

FileEnds read_ends(ports::FileReader& file) {
    FileEnds ends;
    const std::uint64_t size = file.size();
    const std::size_t header = part_of(file, 0, header_within).find("%PDF-");
    if (header != std::string::npos) ends.header = header;
    const std::string tail = part_of(file, size > end_within ? size - end_within : 0, end_within);
    ends.ends_with_line = !tail.empty() && is_line_end(static_cast<std::uint8_t>(tail.back()));
    ends.has_end = says_where_it_ends(tail);
    if (const auto last = last_section_in(tail)) {
        ends.last_section = last->number;
        ends.is_cut = begins_a_revision(last->behind);
    }
    if (ends.last_section) {
        std::string_view section;
        const std::string start = part_of(
            file, static_cast<std::uint64_t>(*ends.last_section) + ends.header.value_or(0), 64);
        section = start;
        while (!section.empty() && is_white(section.front())) section.remove_prefix(1);
        if (!section.starts_with("xref")) ends.kind = CrossReference::stream;
    }
    return ends;
}

}  // namespace tavrix::pdfsign
