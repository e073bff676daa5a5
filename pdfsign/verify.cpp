#include "pdfsign/verify.h"

#include <algorithm>
#include <array>
#include <map>

#include "pdfsign/open_document.h"
#include "pdfsign/refusal.h"

namespace tavrix::pdfsign {
namespace {

constexpr std::uint64_t largest_gap = 8 * 1024 * 1024;
// Each may cost a pass through the whole file.
constexpr std::size_t most_signatures = 1000;

// The two pieces of a document that a signature speaks of: begin, size, begin, size.
using ByteRange = std::array<std::uint64_t, 4>;

ByteRange range_of(QPDFObjectHandle signature, std::uint64_t file_size) {
    QPDFObjectHandle array = signature.getKey("/ByteRange");
    if (!array.isArray() || array.getArrayNItems() != 4) refuse(u"brak zakresu podpisu");
    ByteRange range{};
    for (int i = 0; i < 4; ++i) {
        QPDFObjectHandle number = array.getArrayItem(i);
        if (!number.isInteger() || number.getIntValue() < 0) refuse(u"zły zakres podpisu");
        range[static_cast<std::size_t>(i)] = static_cast<std::uint64_t>(number.getIntValue());
    }
    const auto& [begin, size, second, second_size] = range;
    if (begin != 0 || size >= second || second > file_size || second_size > file_size - second) {
        refuse(u"zły zakres podpisu");
    }
    return range;
}

int digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const char low = static_cast<char>(c | 0x20);
    return low >= 'a' && low <= 'f' ? low - 'a' + 10 : -1;
}

// What is left out between the pieces must be the signature and nothing else, or something unsigned
// could hide there.
base::Bytes signature_in_gap(ports::FileReader& file, const ByteRange& range,
                             const std::string& told) {
    const std::uint64_t size = range[2] - range[1];
    if (size < 2 || size > largest_gap) refuse(u"zły zakres podpisu");
    std::string gap(static_cast<std::size_t>(size), '\0');
    file.seek(range[1]);
    gap.resize(file.read({reinterpret_cast<std::uint8_t*>(gap.data()), gap.size()}));
    if (!gap.starts_with('<') || !gap.ends_with('>')) refuse(u"zakres omija nie tylko podpis");
    base::Bytes bytes;
    int high = -1;
    for (const char c : gap.substr(1, gap.size() - 2)) {
        if (c == ' ' || c == '\n' || c == '\r' || c == '\t') continue;
        const int value = digit(c);
        if (value < 0) refuse(u"zakres omija nie tylko podpis");
        if (high < 0) {
            high = value;
        } else {
            bytes.push_back(static_cast<std::uint8_t>(high * 16 + value));
            high = -1;
        }
    }
    if (high >= 0) bytes.push_back(static_cast<std::uint8_t>(high * 16));
    if (base::chars_of(bytes) != told) refuse(u"zakres omija co innego niż podpis");
    return bytes;
}

ports::ContentReader content_of(ports::FileReader& file, const ByteRange& range) {
    return [&file, range, done = std::uint64_t{0}](std::span<std::uint8_t> buffer) mutable {
        const bool in_first = done < range[1];
        const std::uint64_t left = in_first ? range[1] - done : range[1] + range[3] - done;
        file.seek(in_first ? done : range[2] + (done - range[1]));
        const std::size_t got = file.read(
            buffer.first(static_cast<std::size_t>(std::min<std::uint64_t>(left, buffer.size()))));
        done += got;
        return got;
    };
}

// What was signed was a whole document once: else somebody else's words about where it ends are
// believed.
void expect_end_of_revision(ports::FileReader& file, std::uint64_t end) {
    std::string tail(std::min<std::uint64_t>(end, 32), '\0');
    file.seek(end - tail.size());
    tail.resize(file.read({reinterpret_cast<std::uint8_t*>(tail.data()), tail.size()}));
    tail.resize(tail.find_last_not_of(std::string_view("\0\t\n\f\r ", 6)) + 1);
    if (!tail.ends_with("%%EOF")) refuse(u"podpis nie sięga do końca żadnej wersji pliku");
}

base::Text text_of_string(QPDFObjectHandle object) {
    return object.isString() ? base::from_utf8(object.getUTF8Value()) : base::Text();
}

void judge(VerifiedSignature& verified, QPDFObjectHandle signature, ports::Signing& signing,
           ports::FileReader& file, std::string_view trusted) {
    QPDFObjectHandle kind = signature.getKey("/SubFilter");
    if (!kind.isNameAndEquals("/adbe.pkcs7.detached") &&
        !kind.isNameAndEquals("/ETSI.CAdES.detached")) {
        refuse(u"nieznany rodzaj podpisu");
    }
    QPDFObjectHandle told = signature.getKey("/Contents");
    if (!told.isString()) refuse(u"brak podpisu");
    const std::uint64_t size = file.size();
    const ByteRange range = range_of(signature, size);
    const base::Bytes cms = signature_in_gap(file, range, told.getStringValue());
    verified.findings = signing.verify(cms, content_of(file, range), trusted);
    verified.added_bytes = size - range[2] - range[3];
    if (verified.added_bytes > 0) expect_end_of_revision(file, range[2] + range[3]);
}

}  // namespace

std::vector<VerifiedSignature> verify_pdf(ports::FileReader& file, ports::Signing& signing,
                                          std::string_view trusted) {
    QPDF pdf;
    pdf.setSuppressWarnings(true);
    pdf.processInputSource(std::make_shared<PdfSource>(file), "");
    const Form form = read_form(pdf);
    if (form.signatures.size() > most_signatures) refuse(u"plik ma zbyt wiele podpisów");
    std::vector<VerifiedSignature> all;
    // Fields may share one.
    std::map<QPDFObjGen, std::size_t> judged;
    for (const SignedField& field : form.signatures) {
        QPDFObjectHandle signature = field.signature;
        if (signature.isIndirect()) {
            const auto [known, is_new] = judged.emplace(signature.getObjGen(), all.size());
            if (!is_new) {
                all.push_back(all[known->second]);
                all.back().field = base::from_utf8(field.name);
                continue;
            }
        }
        VerifiedSignature verified{base::from_utf8(field.name), {}, {}, {}, 0};
        verified.time = text_of_string(signature.getKey("/M"));
        try {
            judge(verified, signature, signing, file, trusted);
        } catch (const base::AutomationError& error) {
            verified.fault = error.description();
        }
        all.push_back(std::move(verified));
    }
    return all;
}

}  // namespace tavrix::pdfsign
