// JSON as the service uses it: members keep their order, because older clients read them by
// position.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace tavrix::sandbox {

using Json = nlohmann::ordered_json;

/// Text of a value; bytes that are not UTF-8 become U+FFFD instead of an error.
std::string dump(const Json& value, int indent = -1);

/// Parses a text whose nesting stays below a fixed depth, so that hostile nesting cannot exhaust
/// the stack of whoever walks the value later, and whose objects have a bounded number of members,
/// so that the time for it grows with its length only. Throws nlohmann::json::exception.
Json parse_json(std::string_view text);
/// The same; nothing instead of an exception.
std::optional<Json> read_json(std::string_view text);

/// A whole number, which a command line or an older client writes as text; nothing for all else.
std::optional<std::int64_t> whole_number(const Json& value);

/// Sets or removes the value at a path such as `invoices[0].status.code`, `[*].usage` or `status`.
/// Members that do not exist are made on setting; `[*]` means every element. An index past the end
/// of an array changes nothing. Returns how many places were changed. Throws std::invalid_argument
/// for a path that cannot be read.
std::size_t set_at_path(Json& root, std::string_view path, const Json& value);
std::size_t remove_at_path(Json& root, std::string_view path);
/// Checks a path without applying it. Throws std::invalid_argument.
void check_path(std::string_view path);

}  // namespace tavrix::sandbox
