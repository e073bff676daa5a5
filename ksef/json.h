#pragma once

#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

#include "base/secret.h"

namespace tavrix::ksef {

/// What is read. A member is found without a look at all others: an answer of 1 MB may hold a
/// hundred thousand. Of members with the same name the last counts.
using Json = nlohmann::json;
/// What is sent: the order of the members is meaning there.
using Body = nlohmann::ordered_json;

/// Whether a text is neither too long for a document nor nested deeper than 64 levels.
bool may_be_parsed(std::string_view body);

/// Parses a reply; whatever is not JSON, or nests deeper than 64 levels, gives null. Reading from
/// null gives empty texts, so a malformed answer shows as one that lacks its members.
Json parse_json(std::string_view body);

/// An answer that holds tokens, and the tokens apart from it.
struct SecretAnswer {
    Json rest;
    std::vector<base::SecretUtf8> secrets;  ///< in the order of the paths, "" for absent ones
};

/// Moves the texts at `paths` ("a.b") out of `body` before it is parsed, because the parser wipes
/// none of the copies that it makes. In `body` blanks stand in their place.
SecretAnswer parse_secret_json(base::SecretUtf8& body,
                               std::initializer_list<std::string_view> paths);

/// The value at a path such as "status.code" or "invoices[0].status.code": null when it is not
/// there.
const Json& json_at(const Json& document, std::string_view path);

/// The value as text: strings as they are, numbers and booleans as JSON writes them, arrays and
/// objects as compact JSON, null and absent "".
std::string utf8_at(const Json& document, std::string_view path);
base::Text text_at(const Json& document, std::string_view path);

}  // namespace tavrix::ksef
