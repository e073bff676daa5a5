#include "mail/literal/dodaj_mail.h"

#include <algorithm>

#include "base/error.h"
#include "mail/literal/crypto_base64.h"
#include "mail/literal/polish_letters.h"
#include "mail/mime/charset.h"
#include "mail/mime/file_name.h"
#include "mail/mime/parameters.h"
#include "mail/mime/transfer_encoding.h"
#include "mail/trace_marks.h"

namespace tavrix::mail {
namespace {

constexpr base::TextView line_end = u"\r\n";
constexpr base::TextView empty_line = u"\r\n\r\n";
constexpr base::TextView message_extension = u".eml";

// How long an id may be in `folder`: as a folder of its own, whose path Windows takes up to 247
// characters long, a name of 40 and the backslashes around it have room behind it. In a folder that
// is longer still the ids of two messages should differ all the same.
std::size_t longest_id_in(base::TextView folder) {
    constexpr std::size_t longest_path = 247 - 2 - 40;
    constexpr std::size_t least = 40;
    const std::size_t room =
        folder.size() + least < longest_path ? longest_path - folder.size() : least;
    return std::min<std::size_t>(room, 128);
}

// Hosts' paths have the id in the name of a file, and as a folder with a name behind it.
base::Text id_of_message(const base::Text& message_id, base::TextView folder) {
    const base::Text id = base::remove_characters(message_id, u".<>");
    return id.empty() ? id : harmless_file_name(id, longest_id_in(folder));
}

// As bytes, one for each character where the host's code page allows it: the letters of UTF-8 come
// from the host taken apart.
std::string bytes_of_content(base::TextView content, const ports::CodePage& code_page) {
    try {
        return std::string(base::chars_of(ports::bytes_one_per_character(code_page, content)));
    } catch (const base::AutomationError&) {
        return base::to_utf8(content);  // decoded already
    }
}

base::TextView without_line_end(base::TextView content) {
    return content.ends_with(line_end) ? content.substr(0, content.size() - 2) : content;
}

}  // namespace

base::Text name_of_moment(const base::DateTime& moment) {
    return base::remove_characters(base::format_date_time(moment), u"-: ");
}

DodajMailReader::DodajMailReader(MessageRecord& record, const MessagePorts& ports,
                                 base::Profile profile)
    : record_(record), ports_(ports), profile_(profile), boundaries_(profile) {}

std::int32_t DodajMailReader::read(base::TextView message, base::TextView folder,
                                   bool only_attachments) noexcept {
    try {
        folder_ = folder;
        only_attachments_ = only_attachments;
        read_message(message);
        was_read_to_its_end_ = true;
    } catch (...) {
        // No error reaches the host.
    }
    return result_;
}

void DodajMailReader::read_message(base::TextView message) {
    ports::Trace& trace = ports_.trace;
    trace.mark(dodaj_mail_marks[u"1"]);
    record_[MessageProperty::MessageText].clear();
    const std::size_t header_end = message.find(empty_line);
    trace.mark(dodaj_mail_marks[u"2"]);
    if (header_end == base::TextView::npos) {
        trace.mark(dodaj_mail_marks[u"4exit"]);
        throw base::AutomationError(base::ErrorNumber::not_a_message, u"CMessage.DodajMail",
                                    u"Błędny format maila");
    }
    record_[MessageProperty::Headers] = message.substr(0, header_end);
    record_[MessageProperty::MessageBody] = message.substr(header_end + empty_line.size());
    trace.mark(dodaj_mail_marks[u"5"]);
    for (Lines lines(message.substr(0, header_end)); !lines.at_end();) {
        read_header_line(lines.take());
    }
    trace.mark(dodaj_mail_marks[u"12"]);
    id_ = id_of_message(record_[MessageProperty::MessageID], folder_);
    if (!only_attachments_ && !folder_.empty()) save_message(message);
    result_ = 1;
    read_parts(message.substr(header_end + empty_line.size()));
    trace.mark(dodaj_mail_marks[u"68k"]);
}

void DodajMailReader::read_header_line(base::TextView line) {
    boundaries_.read_header_line(line);
    // A continuation of the line before has no name and is lost.
    const std::size_t colon = line.find(u':');
    if (colon == base::TextView::npos) return;
    for (const HeaderProperty& known : header_properties) {
        if (!base::equal_case_blind(line.substr(0, colon), known.name)) continue;
        record_[known.property] = base::trim(line.substr(colon + 1));
    }
}

void DodajMailReader::save_message(base::TextView message) {
    ports_.trace.mark(dodaj_mail_marks[u"13"]);
    make_folder(folder_);
    base::Bytes bytes = ports_.code_page.to_bytes(message);
    bytes.insert(bytes.end(), {'\r', '\n'});
    ports_.trace.mark(dodaj_mail_marks[u"14"]);
    ports_.files.write(folder_ + id_ + base::Text(message_extension), bytes);
    ports_.trace.mark(dodaj_mail_marks[u"15"]);
}

void DodajMailReader::make_folder(base::TextView path) {
    try {
        ports_.files.make_folder(path);
    } catch (const base::AutomationError&) {
        // What cannot be made may be there; where it is not, the file's own failure says so.
    }
}

void DodajMailReader::read_parts(base::TextView body) {
    ports_.trace.mark(dodaj_mail_marks[u"16"]);
    Lines lines(body);
    std::optional<BoundaryLine> boundary = boundaries_.next(body, 0);
    while (boundary) {
        lines.move_to(boundary->end);
        boundary =
            boundary->closes ? boundaries_.next(body, boundary->end) : read_part(body, lines);
    }
}

std::optional<BoundaryLine> DodajMailReader::read_part(base::TextView body, Lines& lines) {
    ports::Trace& trace = ports_.trace;
    trace.mark(dodaj_mail_marks[u"20"]);
    const PartHeader header = read_part_header(lines, profile_);
    trace.mark(dodaj_mail_marks[u"36exitfor"]);
    const std::size_t begin = lines.position();
    const std::optional<BoundaryLine> boundary = boundaries_.next(body, begin);
    if (!header.is_accepted) {
        trace.mark(dodaj_mail_marks[u"25next"]);
        return boundary;
    }
    trace.mark(dodaj_mail_marks[u"46exitdo"]);
    base::TextView content = lines.rest();
    if (boundary) content = content.substr(0, boundary->begin - begin);
    if (header.is_file) {
        save_file(header, content);
        ++result_;
    } else {
        // The last line of the message ends without its CR LF.
        const bool ends_open = !boundary && !lines.at_end();
        add_text(header, content, ends_open ? line_end : base::TextView());
    }
    trace.mark(dodaj_mail_marks[u"67"]);
    return boundary;
}

void DodajMailReader::add_text(const PartHeader& header, base::TextView content,
                               base::TextView end) {
    ports_.trace.mark(dodaj_mail_marks[u"37"]);
    base::Text& text = record_[MessageProperty::MessageText];
    if (profile_ == base::Profile::classic) {
        text.append(with_polish_letters(content)).append(end);
        return;
    }
    text += decoded_text(header, content);
    if (!text.ends_with(line_end)) text += line_end;
}

void DodajMailReader::save_file(const PartHeader& header, base::TextView content) {
    ports::Trace& trace = ports_.trace;
    trace.mark(dodaj_mail_marks[u"47"]);
    // An id and the name of its folder are taken off what a path may be long.
    const base::Text folder = only_attachments_ ? folder_ : folder_ + id_ + u"\\";
    const base::Text given =
        header.file_name.empty() ? name_of_moment(ports_.clock.now_local()) : header.file_name;
    const base::Text name = harmless_file_name(given, longest_name_in(folder));
    trace.mark(dodaj_mail_marks[u"50"]);
    const base::Bytes bytes = decoded_file(header, content);
    trace.mark(dodaj_mail_marks[u"55"]);
    if (folder_.empty()) return;
    make_folder(folder_);
    if (!only_attachments_) make_folder(folder_ + u"\\" + id_);
    record_.files += only_attachments_ ? u";" + name : u";" + id_ + u"\\" + name;
    trace.mark(dodaj_mail_marks[u"60"]);
    // A longer file keeps its end: hosts may have an older one of the same name there.
    ports_.files.overwrite(folder + name, bytes);
    trace.mark(dodaj_mail_marks[u"65"]);
}

base::Bytes DodajMailReader::decoded_file(const PartHeader& header, base::TextView content) const {
    if (profile_ == base::Profile::classic) return CryptoBase64(ports_.system).Decode(content);
    const std::string bytes = bytes_of_content(without_line_end(content), ports_.code_page);
    return mime::decode_body(mime::transfer_encoding(base::to_utf8(header.transfer_encoding)),
                             bytes);
}

base::Text DodajMailReader::decoded_text(const PartHeader& header, base::TextView content) const {
    const mime::ParameterizedValue type =
        mime::parse_parameters(base::to_utf8(header.content_type));
    const mime::Parameter* const charset = type.find("charset");
    const base::Bytes bytes =
        mime::decode_body(mime::transfer_encoding(base::to_utf8(header.transfer_encoding)),
                          bytes_of_content(content, ports_.code_page));
    return mime::decode_text(base::chars_of(bytes), charset == nullptr ? "" : charset->value,
                             ports_.code_page);
}

}  // namespace tavrix::mail
