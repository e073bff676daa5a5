#include "pdfsign/update.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "pdfsign/refusal.h"

namespace tavrix::pdfsign {
namespace {

int first_free_number(QPDF& document) {
    // More than any reader takes; the field's own numbers must stay below it.
    constexpr std::int64_t highest = 8'388'607;
    std::int64_t size = 1;
    if (QPDFObjectHandle written = document.getTrailer().getKey("/Size"); written.isInteger()) {
        size = written.getIntValue();
    }
    const auto table = document.getXRefTable();
    if (!table.empty()) {
        size = std::max<std::int64_t>(size, std::int64_t{table.rbegin()->first.getObj()} + 1);
    }
    if (size < 1 || size > highest - 100) refuse(u"numery obiektów pliku są za duże");
    return static_cast<int>(size);
}

// ISO 32000-2, 14.4: the first half is the document's for ever, and part of an encrypted one's key.
std::string document_identifier(QPDF& document) {
    QPDFObjectHandle both = document.getTrailer().getKey("/ID");
    if (!both.isArray() || both.getArrayNItems() < 1) return {};
    QPDFObjectHandle first = both.getArrayItem(0);
    return first.isString() ? first.getStringValue() : std::string();
}

}  // namespace

Update::Update(QPDF& document, const FileEnds& ends, std::uint64_t size,
               const Encryption& encryption)
    : document_(document),
      ends_(ends),
      begins_(size),
      encryption_(encryption),
      next_number_(first_free_number(document)) {
    if (!ends.ends_with_line) text = "\n";
    if (encryption.is_on() && document_identifier(document).empty()) {
        refuse(u"zaszyfrowany plik nie ma identyfikatora");
    }
}

QPDFObjGen Update::reserve() {
    return QPDFObjGen(next_number_++, 0);
}

std::size_t Update::put(QPDFObjGen object, std::string_view body) {
    objects_[object.getObj()] = {object.getGen(), begins_ + text.size()};
    text += std::to_string(object.getObj()) + " " + std::to_string(object.getGen()) + " obj\n";
    const std::size_t begins = text.size();
    text += body;
    text += "\nendobj\n";
    return begins;
}

void Update::put(QPDFObjGen object, QPDFObjectHandle changed) {
    put(object, text_of(std::move(changed), object, encryption_));
}

void Update::put_stream(QPDFObjGen object, std::string_view entries, std::string_view content) {
    const std::string written = encryption_.stream(content, object);
    put(object, "<< " + std::string(entries) + " /Length " + std::to_string(written.size()) +
                    " >>\nstream\n" + written + "\nendstream");
}

void Update::finish(base::ByteView new_identifier) {
    const std::string entries = trailer(new_identifier);
    const std::uint64_t section = begins_ + text.size();
    if (ends_.kind == CrossReference::table) {
        write_table(entries);
    } else {
        write_stream(entries);
    }
    text += "startxref\n" + std::to_string(section) + "\n%%EOF\n";
}

std::string Update::trailer(base::ByteView new_identifier) {
    QPDFObjectHandle old = document_.getTrailer();
    std::string entries;
    for (const char* key : {"/Root", "/Info", "/Encrypt"}) {
        if (!old.hasKey(key)) continue;
        entries += " " + std::string(key) + " " + plain_text_of(old.getKey(key));
    }
    std::string first = document_identifier(document_);
    const std::string second(base::chars_of(new_identifier));
    if (first.empty()) first = second;
    return entries + " /ID [ " + hexadecimal(first) + " " + hexadecimal(second) + " ] /Prev " +
           std::to_string(*ends_.last_section);
}

template <typename First, typename Each>
void Update::for_each_run(First first, Each each) const {
    for (auto object = objects_.begin(); object != objects_.end();) {
        auto end = object;
        int count = 0;
        while (end != objects_.end() && end->first == object->first + count) ++end, ++count;
        first(object->first, count);
        for (; object != end; ++object) each(object->second);
    }
}

// 7.5.4: each entry is exactly 20 bytes.
void Update::write_table(const std::string& entries) {
    text += "xref\n";
    for_each_run(
        [&](int number, int count) {
            text += std::to_string(number) + " " + std::to_string(count) + "\n";
        },
        [&](const Place& place) {
            if (place.offset > 9'999'999'999) refuse(u"plik jest za długi dla tablicy odwołań");
            char entry[32];
            std::snprintf(entry, sizeof entry, "%010llu %05d n\r\n",
                          static_cast<unsigned long long>(place.offset), place.generation);
            text += entry;
        });
    text += "trailer\n<< /Size " + std::to_string(next_number_) + entries + " >>\n";
}

// 7.5.8: one byte for the kind, eight for the offset, two for the generation.
void Update::write_stream(const std::string& entries) {
    const QPDFObjGen own = reserve();
    objects_[own.getObj()] = {0, begins_ + text.size()};
    std::string runs;
    std::string rows;
    for_each_run(
        [&](int number, int count) {
            runs += std::to_string(number) + " " + std::to_string(count) + " ";
        },
        [&](const Place& place) {
            rows += '\1';
            for (int shift = 56; shift >= 0; shift -= 8) {
                rows += static_cast<char>(place.offset >> shift & 0xFF);
            }
            rows += static_cast<char>(place.generation >> 8 & 0xFF);
            rows += static_cast<char>(place.generation & 0xFF);
        });
    text += std::to_string(own.getObj()) + " 0 obj\n<< /Type /XRef /W [ 1 8 2 ] /Index [ " + runs +
            "] /Size " + std::to_string(next_number_) + entries + " /Length " +
            std::to_string(rows.size()) + " >>\nstream\n" + rows + "\nendstream\nendobj\n";
}

}  // namespace tavrix::pdfsign
