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
    // The name under which there was room.
    base::Text written(const base::Text& name, base::ByteView bytes) {
        // Each try is a file that is opened, on a disk across a network perhaps.
        constexpr int most_tries = 10'000;
        base::Text free = names_.take(name);
        if (folder_.empty()) return free;
        try {
            for (int tries = 1; !ports_.files.write_new(folder_ + free, bytes); ++tries) {
                if (tries == most_tries) {
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

    base::Text folder_;
    const MessagePorts& ports_;
    MessageRecord& record_;
    std::size_t longest_;
    DistinctNames names_;
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

}  // namespace

bool take_received_message(base::ByteView bytes, const base::Text& folder,
                           const MessagePorts& ports, MessageRecord& record) {
    const ports::CodePage& code_page = ports.code_page;
    Saver saver(folder, ports, record);
    const mime::Message message = mime::parse_message(base::chars_of(bytes), code_page);
    record[MessageProperty::Headers] = code_page.to_text(base::bytes_of(message.header_text));
    record[MessageProperty::MessageBody] = code_page.to_text(base::bytes_of(message.body));
    take_header(message, code_page, record);
    if (!message.is_taken_apart) {
        saver.save({}, extension_of("message/rfc822"), bytes);
        return false;
    }
    base::Text& text = record[MessageProperty::MessageText];
    for (const mime::Part& part : message.texts) {
        text += mime::text_of(part, code_page);
        if (!text.ends_with(u'\n')) text += u"\r\n";
    }
    for (const mime::Part& part : message.files) {
        if (part.encoding == mime::TransferEncoding::identity) {
            saver.save(part.file_name, extension_of(part.type), base::bytes_of(part.body));
        } else {
            saver.save(part.file_name, extension_of(part.type),
                       mime::decode_body(part.encoding, part.body));
        }
    }
    return true;
}

}  // namespace tavrix::mail
