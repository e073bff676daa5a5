#include "mail/received_message.h"

#include <algorithm>

#include "base/error.h"
#include "mail/mime/encoded_words.h"
#include "mail/mime/file_name.h"
#include "mail/mime/message.h"

namespace tavrix::mail {
namespace {

struct Extension {
    std::string_view type;
    base::TextView extension;
};

// For files that came without a name: those that invoices and their reports come as.
constexpr Extension extensions[] = {
    {"application/pdf", u".pdf"},
    {"application/xml", u".xml"},
    {"text/xml", u".xml"},
    {"application/zip", u".zip"},
    {"application/x-zip-compressed", u".zip"},
    {"application/pkcs7-mime", u".p7m"},
    {"application/x-pkcs7-mime", u".p7m"},
    {"application/pkcs7-signature", u".p7s"},
    {"application/x-pkcs7-signature", u".p7s"},
    {"application/rtf", u".rtf"},
    {"application/ms-tnef", u".dat"},
    {"message/rfc822", u".eml"},
    {"message/delivery-status", u".txt"},
    {"text/plain", u".txt"},
    {"text/html", u".html"},
    {"text/csv", u".csv"},
    {"text/calendar", u".ics"},
    {"text/rfc822-headers", u".txt"},
    {"image/gif", u".gif"},
    {"image/jpeg", u".jpg"},
    {"image/png", u".png"},
    {"image/tiff", u".tif"},
};

base::TextView extension_of(std::string_view type) {
    const auto found = std::ranges::find(extensions, type, &Extension::type);
    return found == std::end(extensions) ? base::TextView() : found->extension;
}

// A folder with more of them is no longer of use to anybody.
constexpr std::size_t most_files = 1000;
// Of the files of one message. Each is a file that is opened, on a disk across a network perhaps.
constexpr int most_tries = 100;

// Saves the files of one message.
class Saver {
  public:
    Saver(const base::Text& folder, const MessagePorts& ports, MessageRecord& record)
        : folder_(folder.empty() || folder.ends_with(u'\\') ? folder : folder + u"\\"),
          ports_(ports),
          record_(record),
          longest_(longest_name_in(folder_)),
          names_(longest_) {
        if (folder_.empty()) return;
        try {
            ports_.files.make_folder(base::TextView(folder_).substr(0, folder_.size() - 1));
        } catch (const base::AutomationError&) {
            // What cannot be made may be there; where it is not, the first file says so.
        }
    }

    void save(const base::Text& given, base::TextView extension, base::ByteView bytes) {
        base::Text name = harmless_file_name(
            given.empty() ? name_of_moment(ports_.clock.now_local()) + base::Text(extension)
                          : given,
            longest_);
        // Hosts take the list of files apart at it.
        std::ranges::replace(name, u';', u'_');
        record_.files += u";" + written(name, bytes);
    }

  private:
    // The name under which there was room. A stranger can fill a folder with names, but not with
    // those of a moment that he does not know.
    base::Text written(base::Text name, base::ByteView bytes) {
        base::Text free = names_.take(name);
        if (folder_.empty()) return free;
        try {
            for (bool has_moment = false; !ports_.files.write_new(folder_ + free, bytes);) {
                ++tries_;
                if (!has_moment && tries_ >= most_tries) {
                    name = with_moment(name);
                    has_moment = true;
                }
                if (tries_ > most_tries + static_cast<int>(2 * most_files)) {
                    throw base::AutomationError(base::ErrorNumber::component_failed,
                                                u"CMessage.take",
                                                u"Zbyt wiele plików ma taką nazwę");
                }
                free = names_.take(name);
            }
        } catch (const base::AutomationError& error) {
            throw base::AutomationError(error.number(), error.source(),
                                        error.description() + u": " + folder_ + free);
        }
        return free;
    }

    base::Text with_moment(const base::Text& name) const {
        return harmless_file_name(name_of_moment(ports_.clock.now_local()) + u" " + name, longest_);
    }

    base::Text folder_;
    const MessagePorts& ports_;
    MessageRecord& record_;
    std::size_t longest_;
    DistinctNames names_;
    int tries_ = 0;
};

void take_header(const mime::Message& message, const ports::CodePage& code_page,
                 MessageRecord& record) {
    for (const HeaderProperty& known : header_properties) {
        const std::string name = base::to_utf8(known.name);
        const auto value = known.property == MessageProperty::Received ? message.header.last(name)
                                                                       : message.header.first(name);
        if (value) record[known.property] = mime::decode_words(*value, code_page);
    }
}

base::Bytes bytes_of_file(const mime::Part& part) {
    base::Bytes bytes = mime::decode_body(part.encoding, part.body);
    const bool is_empty = part.body.find_first_not_of(" \t\r\n") == std::string_view::npos;
    if (!bytes.empty() || is_empty) return bytes;
    // It is not what it says it is, and would be lost with its message.
    const base::ByteView undecoded = base::bytes_of(part.body);
    return {undecoded.begin(), undecoded.end()};
}

// The same when the message comes again.
base::Text name_of_whole(const MessageRecord& record) {
    const base::Text id = base::remove_characters(record[MessageProperty::MessageID], u"<> \t\r\n");
    return id.empty() ? id : id + u".eml";
}

}  // namespace

bool take_received_message(base::ByteView bytes, const base::Text& folder, bool keep_whole,
                           const MessagePorts& ports, MessageRecord& record) {
    const ports::CodePage& code_page = ports.code_page;
    Saver saver(folder, ports, record);
    const mime::Message message = mime::parse_message(base::chars_of(bytes), code_page);
    record[MessageProperty::Headers] = code_page.to_text(base::bytes_of(message.header_text));
    record[MessageProperty::MessageBody] = code_page.to_text(base::bytes_of(message.body));
    take_header(message, code_page, record);
    const bool has_too_many = message.files.size() > most_files;
    if (keep_whole || has_too_many || !message.is_taken_apart) {
        saver.save(name_of_whole(record), extension_of("message/rfc822"), bytes);
    }
    if (!message.is_taken_apart) return false;
    base::Text& text = record[MessageProperty::MessageText];
    for (const mime::Part& part : message.texts) {
        text += mime::text_of(part, code_page);
        if (!text.ends_with(u'\n')) text += u"\r\n";
    }
    if (has_too_many) return true;
    for (const mime::Part& part : message.files) {
        if (part.encoding == mime::TransferEncoding::identity) {
            saver.save(part.file_name, extension_of(part.type), base::bytes_of(part.body));
        } else {
            saver.save(part.file_name, extension_of(part.type), bytes_of_file(part));
        }
    }
    return true;
}

}  // namespace tavrix::mail
