#include <string_view>

#include "base/error.h"
#include "frame/settings_file.h"
#include "fuzz/fuzz_target.h"

using namespace tavrix;

std::vector<std::string> fuzz::seeds() {
    return {
        R"({"ksef":{"test":"https://localhost:8443","path_root":"/v2"},
           "http":{"connect_timeout_ms":1500,"proxy":"direct","private_ca_file":"ca.pem"},
           "helpdesk":{"address":"a@b.example","routes":{"526-587-76-35":"c@d.example"}}})",
        "\xEF\xBB\xBF{}",
        R"({"trace":{"root":"/srv/c"},"qr":{"demo":"http://x"}})",
    };
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        frame::parse_settings(text, "Tavrix.json");
    } catch (const base::AutomationError& error) {
        // Whoever reads the message must find the place.
        if (error.description().find(u"Tavrix.json, wiersz ") != 0) std::abort();
    }
    return 0;
}
