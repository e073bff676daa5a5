// Reading JSON bodies of requests: everything that does not fit is refused with 21405.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "sandbox/basics/text.h"
#include "sandbox/exchange/exchange.h"
#include "sandbox/exchange/refusals.h"

namespace tavrix::sandbox {

/// The body as a JSON object.
Json read_body(const Request& request);

/// Refusal 21405 for a member that is not of its type, or has a value the contract does not know.
Refusal wrong_format(const char* name);
Refusal unknown_value(const char* name);

/// A member of an object, null when it is absent or null.
const Json* given(const Json& body, const char* name);
const Json& required_object(const Json& body, const char* name);
std::string required_text(const Json& body, const char* name);
/// A text that is one of the values the contract names.
template <typename Values>
std::string required_choice(const Json& body, const char* name, const Values& values) {
    std::string text = required_text(body, name);
    if (!contains(values, text)) throw unknown_value(name);
    return text;
}
/// Empty when the member is absent or null.
std::string optional_text(const Json& body, const char* name);
bool optional_flag(const Json& body, const char* name);
/// A whole number of at least one; older clients send it as text, and the service reads that.
std::int64_t required_count(const Json& body, const char* name);
/// The bytes behind a Base64 text.
std::string required_bytes(const Json& body, const char* name);
/// A SHA-256 in Base64: 44 characters that decode to 32 bytes.
std::string required_hash(const Json& body, const char* name);
std::vector<std::string> text_list(const Json& body, const char* name);

}  // namespace tavrix::sandbox
