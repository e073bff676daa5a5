#pragma once

#include <cstdint>
#include <stdexcept>

#include "base/text.h"

namespace tavrix::base {

/// Numbers that cross the automation boundary as HRESULTs. Values are Windows' own (winerror.h).
enum class ErrorNumber : std::uint32_t {
    overflow = 0x800A0006,          // the hosts' run-time error 6
    type_mismatch = 0x800A000D,     // run-time error 13
    subscript = 0x800A0009,         // run-time error 9
    component_failed = 0x80040200,  // first number of the object-error range
    not_a_message = 0x80040265,
    // CryptoBase64's own.
    version_unknown = 0x8004E300,
    not_windows_nt = 0x8004E301,
    format_needs_xp = 0x8004E302,
    format_needs_vista = 0x8004E303,
    base64_not_decoded = 0x8004E304,
    base64_not_encoded = 0x8004E305,
    // The numbers that hosts know from ADO.
    item_not_found = 0x800A0CC1,  // 3265: no field of that name
    no_current_row = 0x800A0BCD,  // 3021: before the first or behind the last row
    object_closed = 0x800A0E78,   // 3704: the connection or recordset is closed
    database_failed = 0x80040E14,
    value_refused = 0x80040E21,  // the field does not take the value: too long, or of another kind
    table_not_found = 0x80040E37,
    row_changed = 0x80040E38,  // the row is gone or was changed meanwhile
};

/// What a method raises to its caller: the number, the source and the description that a host reads
/// from its error object. Public methods that must not raise turn it into their failure value.
class AutomationError : public std::runtime_error {
  public:
    AutomationError(ErrorNumber number, Text source, Text description)
        : std::runtime_error(to_utf8(source + u": " + description)),
          number_(number),
          source_(std::move(source)),
          description_(std::move(description)) {}

    ErrorNumber number() const noexcept { return number_; }
    const Text& source() const noexcept { return source_; }
    const Text& description() const noexcept { return description_; }

  private:
    ErrorNumber number_;
    Text source_;
    Text description_;
};

}  // namespace tavrix::base
