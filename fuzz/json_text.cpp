// A document read by the position of its values, which must be what a parser finds there.
#include "ksef/json_text.h"

#include <cstdlib>

#include "fuzz/fuzz_target.h"
#include "ksef/json.h"

using namespace tavrix::ksef;

std::vector<std::string> tavrix::fuzz::seeds() {
    return {
        R"({"sessions":[{"referenceNumber":"R","status":{"code":200,"details":["a\"]}"]}}],"t":""})",
        R"([ 1.50 , -2e3 , true,null , "\u0142\\" , {} , [ ] , {"a":{"b":[1]}} ])",
        R"({"a":1,"a":{"nip":"1"},"":"x"})",
    };
}

namespace {

void compare(const JsonPiece& piece, const Body& parsed) {
    const auto values = piece.values();
    if (parsed.is_array() && values.size() != parsed.size()) std::abort();
    // Of members with the same name a parser keeps one.
    if (parsed.is_object() && values.size() < parsed.size()) std::abort();
    for (const JsonPiece& value : values) {
        if (!Json::accept(value.json())) std::abort();
        value.utf8();
    }
    if (!parsed.is_array()) return;
    for (std::size_t i = 0; i < values.size(); ++i) compare(values[i], parsed[i]);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view body(reinterpret_cast<const char*>(data), size);
    const auto document = JsonPiece::document(body);
    if (document.has_value() == parse_json(body).is_null() && body.find("null") == body.npos) {
        std::abort();
    }
    if (document) compare(*document, Body::parse(body));
    return 0;
}
