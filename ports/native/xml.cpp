#include "base/base64.h"
#include "base/error.h"
#include "ports/native/adapters.h"

namespace tavrix::ports {
namespace {

// MSXML breaks the lines of a bin.base64 element after this many digits, with LF alone.
constexpr std::size_t line_length = 72;

class NativeXml final : public Xml {
  public:
    base::Bytes bytes_from_base64(DomDocument, base::TextView element,
                                  base::TextView base64) override {
        auto bytes = base::base64_decode(base::to_utf8(base64));
        if (!bytes) {
            throw base::AutomationError(base::ErrorNumber::type_mismatch, u"Xml",
                                        u"Error parsing the text of element '" +
                                            base::Text(element) + u"' as bin.base64 datatype.");
        }
        return std::move(*bytes);
    }

    base::Text base64_from_bytes(DomDocument, base::TextView, base::ByteView bytes) override {
        const std::string digits = base::base64_encode(bytes);
        base::Text lines;
        lines.reserve(digits.size() + digits.size() / line_length);
        for (std::size_t i = 0; i < digits.size(); ++i) {
            if (i > 0 && i % line_length == 0) lines += u'\n';
            lines += static_cast<char16_t>(digits[i]);
        }
        return lines;
    }
};

}  // namespace

std::unique_ptr<Xml> make_native_xml() {
    return std::make_unique<NativeXml>();
}

}  // namespace tavrix::ports
