#include "mail/literal/part_header.h"

#include <algorithm>

namespace tavrix::mail {
namespace {

constexpr base::TextView accepted_types[] = {u"application/pdf",
                                             u"application/rtf",
                                             u"application/soap+xml",
                                             u"application/zip",
                                             u"application/octet-stream",
                                             u"image/gif",
                                             u"image/jpeg",
                                             u"image/tiff",
                                             u"text/html",
                                             u"text/plain",
                                             u"text/richtext",
                                             u"text/xml"};

constexpr base::TextView name_mark = u"name=";

bool contains(base::TextView text, base::TextView word) {
    return base::find_case_blind(text, word) != base::TextView::npos;
}

base::Text without_quotation_marks(base::TextView name, base::Profile profile) {
    const bool is_quoted = name.size() >= 2 && name.front() == u'"' && name.back() == u'"';
    if (profile == base::Profile::current && !is_quoted) return base::Text(name);
    return base::Text(name.size() < 2 ? base::TextView() : name.substr(1, name.size() - 2));
}

base::Text file_name_in(base::TextView line, base::Profile profile) {
    const std::size_t mark = base::find_case_blind(line, name_mark);
    const base::TextView value = line.substr(mark + name_mark.size());
    return without_quotation_marks(base::trim(value.substr(0, value.find(u';'))), profile);
}

class HeaderReader {
  public:
    explicit HeaderReader(base::Profile profile) : profile_(profile) {}

    void take(base::TextView line) {
        take_field(line);
        if (contains(line, name_mark)) {
            header_.is_file = true;
            if (!name_is_known_) header_.file_name = file_name_in(line, profile_);
        }
        if (contains(line, u"attachment")) name_is_known_ = true;
    }
    PartHeader& header() { return header_; }

  private:
    void take_field(base::TextView line) {
        const std::size_t colon = line.find(u':');
        if (colon == base::TextView::npos) return;
        const base::TextView name = line.substr(0, colon);
        const base::TextView value = base::trim(line.substr(colon + 1));
        if (base::equal_case_blind(name, u"content-transfer-encoding")) {
            header_.transfer_encoding = value;
        }
        if (!base::equal_case_blind(name, u"content-type")) return;
        header_.content_type = value;
        header_.is_accepted =
            header_.is_accepted || std::ranges::any_of(accepted_types, [&](base::TextView type) {
                return contains(value, type);
            });
    }

    base::Profile profile_;
    PartHeader header_;
    bool name_is_known_ = false;
};

}  // namespace

PartHeader read_part_header(Lines& lines, base::Profile profile) {
    HeaderReader reader(profile);
    base::Text joined;
    while (!lines.at_end()) {
        const base::TextView line = lines.take();
        if (line.empty()) break;
        joined += line;
        if (line.ends_with(u';')) continue;
        reader.take(joined);
        joined.clear();
    }
    if (!joined.empty()) reader.take(joined);
    return std::move(reader.header());
}

}  // namespace tavrix::mail
