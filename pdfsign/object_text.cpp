#include "pdfsign/object_text.h"

#include <cstdio>

#include "pdfsign/refusal.h"

namespace tavrix::pdfsign {
namespace {

constexpr int deepest_object = 100;

class Writer {
  public:
    Writer(QPDFObjGen owner, const Encryption* encryption)
        : owner_(owner), encryption_(encryption) {}

    void write(QPDFObjectHandle object, int depth) {
        if (depth > deepest_object) refuse(u"obiekt pliku jest zagnieżdżony zbyt głęboko");
        if (depth > 0 && object.isIndirect()) {
            text += reference(object.getObjGen());
        } else if (object.isString()) {
            write_string(object, true);
        } else if (object.isArray()) {
            text += '[';
            for (QPDFObjectHandle item : object.getArrayAsVector()) {
                text += ' ';
                write(item, depth + 1);
            }
            text += " ]";
        } else if (object.isDictionary()) {
            write_dictionary(object, depth);
        } else {
            text += object.unparseResolved();
        }
    }

    std::string text;

  private:
    void write_dictionary(QPDFObjectHandle& dictionary, int depth) {
        // A signature's content is never encrypted (ISO 32000-2, 7.6.2), and libqpdf knows that.
        const bool is_signature =
            dictionary.getKey("/Type").isNameAndEquals("/Sig") && dictionary.hasKey("/ByteRange");
        text += "<<";
        for (const std::string& key : dictionary.getKeys()) {
            QPDFObjectHandle value = dictionary.getKey(key);
            text += ' ';
            text += QPDFObjectHandle::newName(key).unparse();
            text += ' ';
            if (is_signature && key == "/Contents" && value.isString() && !value.isIndirect()) {
                write_string(value, false);
            } else {
                write(value, depth + 1);
            }
        }
        text += " >>";
    }

    void write_string(QPDFObjectHandle& string, bool encrypt) {
        const std::string value = string.getStringValue();
        text += hexadecimal(encrypt && encryption_ != nullptr ? encryption_->string(value, owner_)
                                                              : value);
    }

    QPDFObjGen owner_;
    const Encryption* encryption_;
};

}  // namespace

std::string hexadecimal(std::string_view bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text = "<";
    for (const char c : bytes) {
        const auto byte = static_cast<std::uint8_t>(c);
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text + ">";
}

std::string reference(QPDFObjGen object) {
    return std::to_string(object.getObj()) + " " + std::to_string(object.getGen()) + " R";
}

std::string decimal(double number) {
    char text[64];
    std::snprintf(text, sizeof text, "%.3f", number);
    std::string digits = text;
    // Some hosts set a locale with a decimal comma.
    if (const auto comma = digits.find(','); comma != digits.npos) digits[comma] = '.';
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.ends_with('.')) digits.pop_back();
    return digits == "-0" ? "0" : digits;
}

std::string text_of(QPDFObjectHandle object, QPDFObjGen owner, const Encryption& encryption) {
    Writer writer(owner, &encryption);
    writer.write(std::move(object), 0);
    return std::move(writer.text);
}

std::string plain_text_of(QPDFObjectHandle object) {
    if (object.isIndirect()) return reference(object.getObjGen());
    Writer writer({}, nullptr);
    writer.write(std::move(object), 0);
    return std::move(writer.text);
}

}  // namespace tavrix::pdfsign
