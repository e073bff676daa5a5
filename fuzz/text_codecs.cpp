#include <cstdlib>

#include "base/base64.h"
#include "base/date_time.h"
#include "base/error.h"
#include "fuzz/fuzz_target.h"
#include "ksef/encoding.h"

using namespace tavrix;

std::vector<std::string> fuzz::seeds() {
    return {
        "TWFu IHN1cmU=",
        "2026-11-21T10:15:30.1234567+01:00",
        "2025-02-28 23:59:60",
        R"({"accessToken":{"token":"eyJ.a.b","validUntil":"2026"},"access_token":"x"})",
        R"(<bits n="2160">AAEC</bits>)",
        "Zażółć gęślą jaźń \xF0\x9F\x98\x80 \xED\xA0\x80",
    };
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    // There and back again.
    const std::string encoded = base::base64_encode(base::ByteView(data, size));
    if (base::base64_decode(encoded) != base::Bytes(data, data + size)) std::abort();
    if (const auto decoded = base::base64_decode(bytes)) {
        if (base::base64_decode(base::base64_encode(*decoded)) != decoded) std::abort();
    }

    const base::Text text = base::from_utf8(bytes);
    if (base::from_utf8(base::to_utf8(text)) != text) std::abort();
    if (const auto moment = base::parse_date_time(text)) {
        if (base::parse_date_time(base::format_date_time(*moment)) != moment) std::abort();
    }
    ksef::extract_token(text);
    ksef::extract_key_bits(text);
    ksef::base64_to_bytes(text);
    try {
        ksef::timestamp_to_unix_ms(text);
    } catch (const base::AutomationError&) {
        // No timestamp.
    }
    return 0;
}
