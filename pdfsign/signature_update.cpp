#include "pdfsign/signature_update.h"

#include <cstdio>
#include <cstdlib>

#include "pdfsign/caption.h"
#include "pdfsign/placement.h"
#include "pdfsign/refusal.h"

namespace tavrix::pdfsign {
namespace {

// Hosts' users know the line so, spelling included.
constexpr base::TextView caption_of_name = u"Podpisany ekektronicznie: ";
constexpr double font_size = 10;
constexpr std::size_t range_room = 60;

std::int64_t minutes_of(const base::DateTime& moment) {
    return base::days_from_civil(moment.year, moment.month, moment.day) * 1440 + moment.hour * 60 +
           moment.minute;
}

// ISO 32000-2, 7.9.4, with the local time's distance from UTC.
std::string pdf_date(const SignatureContent& content) {
    // Both clocks are read one after the other, and zones are whole quarters of an hour.
    const std::int64_t apart = minutes_of(content.local) - minutes_of(content.utc);
    const std::int64_t offset = (apart + (apart < 0 ? -7 : 7)) / 15 * 15;
    const bool believable = std::llabs(offset) <= 14 * 60;
    const base::DateTime& at = believable ? content.local : content.utc;
    char text[80];
    std::snprintf(text, sizeof text, "D:%04d%02d%02d%02d%02d%02d", at.year, at.month, at.day,
                  at.hour, at.minute, at.second);
    std::string date = text;
    if (!believable || offset == 0) return date + "Z";
    std::snprintf(text, sizeof text, "%c%02d'%02d'", offset < 0 ? '-' : '+',
                  static_cast<int>(std::llabs(offset) / 60),
                  static_cast<int>(std::llabs(offset) % 60));
    return date + text;
}

std::string utf16(base::TextView text) {
    std::string bytes = "\xFE\xFF";
    for (const char16_t c : text) {
        bytes += static_cast<char>(c >> 8);
        bytes += static_cast<char>(c & 0xFF);
    }
    return bytes;
}

std::string free_name(const Form& form) {
    for (int number = 1;; ++number) {
        std::string name = "Signature" + std::to_string(number);
        if (!form.names.contains(name)) return name;
    }
}

// The parts of one update, in the order of writing.
class Builder {
  public:
    Builder(OpenDocument& document, ports::Signing& signing, const SignatureContent& content)
        : document_(document),
          content_(content),
          encryption_(*document.pdf, signing),
          update_(*document.pdf, document.ends, document.file->size(), encryption_) {}

    SignatureUpdate build(base::ByteView new_identifier) {
        const QPDFObjGen signature = update_.reserve();
        const QPDFObjGen field = update_.reserve();
        put_signature(signature);
        put_field(field, signature);
        put_page(field);
        put_form(field);
        update_.finish(new_identifier);
        set_byte_range();
        return {std::move(update_.text), gap_begins_, gap_ends_};
    }

  private:
    void put_signature(QPDFObjGen signature) {
        const auto text = [&](std::string_view plain) {
            return hexadecimal(encryption_.string(plain, signature));
        };
        // /Type and /ByteRange before /Contents: readers know by them that it is not encrypted.
        std::string body = "<< /Type /Sig /Filter /Adobe.PPKLite /SubFilter /";
        body += content_.profile == Profile::pades ? "ETSI.CAdES.detached" : "adbe.pkcs7.detached";
        body += " /Name " + text(utf16(content_.name)) + " /M " + text(pdf_date(content_));
        body += " /ByteRange ";
        const std::size_t range = body.size();
        body += std::string(range_room, ' ') + " /Contents ";
        const std::size_t gap = body.size();
        body += "<" + std::string(2 * content_.bytes, '0') + ">";
        const std::size_t gap_end = body.size();
        const std::size_t begins = update_.put(signature, body + " >>");
        range_at_ = begins + range;
        gap_begins_ = begins + gap;
        gap_ends_ = begins + gap_end;
    }

    // The field and its only widget in one (12.5.6.19).
    void put_field(QPDFObjGen field, QPDFObjGen signature) {
        const Caption caption = lay_out(
            {base::Text(caption_of_name) + content_.name, base::format_date_time(content_.local)},
            font_size);
        const Placement place = place_box(document_.page, caption.width, caption.height);
        const QPDFObjGen form = put_appearance(update_, encryption_, caption, place.matrix);
        std::string rectangle;
        for (const double edge : place.rectangle) rectangle += decimal(edge) + " ";
        // 132: printed and locked.
        update_.put(field, "<< /Type /Annot /Subtype /Widget /FT /Sig /T " +
                               hexadecimal(encryption_.string(free_name(document_.form), field)) +
                               " /V " + reference(signature) + " /F 132 /P " +
                               reference(document_.page.page.getObjGen()) + " /Rect [ " +
                               rectangle + "] /AP << /N " + reference(form) + " >> >>");
    }

    // With a list of annotations of its own: pages may share one.
    void put_page(QPDFObjGen field) {
        QPDFObjectHandle page = document_.page.page.shallowCopy();
        page.replaceKey("/Annots", with(page.getKey("/Annots"), field));
        update_.put(document_.page.page.getObjGen(), page);
    }

    void put_form(QPDFObjGen field) {
        QPDFObjectHandle old = document_.form.dictionary;
        const bool exists = old.isDictionary();
        QPDFObjectHandle form = exists ? old.shallowCopy() : QPDFObjectHandle::newDictionary();
        QPDFObjectHandle fields = form.getKey("/Fields");
        if (fields.isArray() && fields.isIndirect()) {
            update_.put(fields.getObjGen(), with(fields, field));
        } else {
            form.replaceKey("/Fields", with(fields, field));
        }
        QPDFObjectHandle flags = form.getKey("/SigFlags");
        const long long set = flags.isInteger() ? flags.getIntValue() : 0;
        form.replaceKey("/SigFlags", QPDFObjectHandle::newInteger(set | 3));
        // Both make readers put something else in our box's place; a signature already there may
        // stand for them.
        if (document_.form.signatures.empty()) {
            form.removeKey("/XFA");
            if (document_.form.is_drawn) form.removeKey("/NeedAppearances");
        }
        if (exists && old.isIndirect()) {
            update_.put(old.getObjGen(), form);
            return;
        }
        QPDFObjectHandle root = document_.pdf->getRoot();
        QPDFObjectHandle catalog = root.shallowCopy();
        catalog.replaceKey("/AcroForm", form);
        update_.put(root.getObjGen(), catalog);
    }

    QPDFObjectHandle with(QPDFObjectHandle list, QPDFObjGen field) {
        QPDFObjectHandle longer = QPDFObjectHandle::newArray();
        if (list.isArray()) {
            for (QPDFObjectHandle item : list.getArrayAsVector()) longer.appendItem(item);
        }
        longer.appendItem(document_.pdf->getObjectByObjGen(field));
        return longer;
    }

    void set_byte_range() {
        const std::uint64_t before = document_.file->size();
        const std::string range = "[ 0 " + std::to_string(before + gap_begins_) + " " +
                                  std::to_string(before + gap_ends_) + " " +
                                  std::to_string(update_.text.size() - gap_ends_) + " ]";
        if (range.size() > range_room) refuse(u"plik jest za długi");
        update_.text.replace(range_at_, range.size(), range);
    }

    OpenDocument& document_;
    const SignatureContent& content_;
    Encryption encryption_;
    Update update_;
    std::size_t range_at_ = 0;
    std::size_t gap_begins_ = 0;
    std::size_t gap_ends_ = 0;
};

}  // namespace

SignatureUpdate make_signature_update(OpenDocument& document, ports::Signing& signing,
                                      const SignatureContent& content) {
    base::Bytes identifier(16);
    signing.fill_random(identifier);
    return Builder(document, signing, content).build(identifier);
}

}  // namespace tavrix::pdfsign
