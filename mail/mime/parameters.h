#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tavrix::mail::mime {

/// The value of one parameter, its pieces joined and its percent codes undone (RFC 2231).
struct Parameter {
    std::string name;
    std::string value;
    /// Said by the parameter itself; empty when it says none.
    std::string charset;
};

/// A value such as `attachment; filename="FV 1.pdf"` (RFC 2045, section 5.1), read with what mail
/// programs make of it: values without quotation marks may have blanks, quotation marks may have no
/// end, comments may stand between.
struct ParameterizedValue {
    /// In lower case: "text/plain", "attachment".
    std::string value;
    /// Names in lower case, each once.
    std::vector<Parameter> parameters;

    /// Null when there is none.
    const Parameter* find(std::string_view name) const noexcept;
};

ParameterizedValue parse_parameters(std::string_view text);

}  // namespace tavrix::mail::mime
