#include "sandbox/pages/validator_words.h"

#include <optional>
#include <string_view>
#include <vector>

#include "sandbox/pages/html.h"

namespace tavrix::sandbox {
namespace {

/// A sentence must be readable whatever a stranger wrote.
constexpr std::size_t longest_value = 120;

struct Sentence {
    /// Each `%` stands for something.
    std::string_view english;
    /// `%1` is the first of it.
    std::string_view polish;
};

// Source: xmlschemas.c of libxml2. A sentence that begins like another one stands before it.
constexpr Sentence sentences[] = {
    {"Element '%': This element is not expected. Expected is one of ( % ).",
     "Element %1 nie może stać w tym miejscu. Dozwolone są tu: %2."},
    {"Element '%': This element is not expected. Expected is ( % ).",
     "Element %1 nie może stać w tym miejscu. Powinien tu być: %2."},
    {"Element '%': This element is not expected.", "Element %1 nie może stać w tym miejscu."},
    {"Element '%': Missing child element(s). Expected is one of ( % ).",
     "Element %1 jest niepełny. Brakuje w nim jednego z: %2."},
    {"Element '%': Missing child element(s). Expected is ( % ).",
     "Element %1 jest niepełny. Brakuje w nim: %2."},
    {"Element '%': [facet 'pattern'] The value '%' is not accepted by the pattern '%'.",
     "Element %1: wartość „%2” nie pasuje do wzorca %3."},
    {"Element '%': [facet 'enumeration'] The value '%' is not an element of the set {%}.",
     "Element %1: wartość „%2” nie jest żadną z dozwolonych: %3."},
    {"Element '%': [facet 'minLength'] The value has a length of '%'; this underruns the allowed "
     "minimum length of '%'.",
     "Element %1: wartość jest za krótka, długość %2; najmniejsza długość to %3."},
    {"Element '%': [facet 'maxLength'] The value has a length of '%'; this exceeds the allowed "
     "maximum length of '%'.",
     "Element %1: wartość jest za długa, długość %2; największa długość to %3."},
    {"Element '%': [facet 'minInclusive'] The value '%' is less than the minimum value allowed "
     "('%').",
     "Element %1: wartość „%2” jest mniejsza od najmniejszej dozwolonej, %3."},
    {"Element '%': [facet 'maxInclusive'] The value '%' is greater than the maximum value allowed "
     "('%').",
     "Element %1: wartość „%2” jest większa od największej dozwolonej, %3."},
    {"Element '%': [facet 'fractionDigits'] The value '%' has more fractional digits than are "
     "allowed ('%').",
     "Element %1: wartość „%2” ma za wiele cyfr po przecinku; dozwolonych jest %3."},
    {"Element '%': [facet 'totalDigits'] The value '%' has more digits than are allowed ('%').",
     "Element %1: wartość „%2” ma za wiele cyfr; dozwolonych jest %3."},
    {"Element '%': '%' is not a valid value of the atomic type '%'.",
     "Element %1: wartość „%2” jest niepoprawna dla typu %3."},
    {"Element '%': '%' is not a valid value of the local atomic type.",
     "Element %1: wartość „%2” jest niepoprawna."},
    {"Element '%': No matching global declaration available for the validation root.",
     "Element główny %1 nie należy do schematu."},
};

/// What the `%` of a pattern stand for in a text, or nothing when it does not fit. One pass, no
/// going back: the values are a stranger's.
std::optional<std::vector<std::string>> fit(std::string_view pattern, std::string_view text) {
    std::vector<std::string> values;
    for (;;) {
        const std::size_t mark = pattern.find('%');
        const std::string_view literal = pattern.substr(0, mark);
        if (mark == std::string_view::npos)
            return text == literal ? std::optional(values) : std::nullopt;
        if (!text.starts_with(literal)) return std::nullopt;
        text.remove_prefix(literal.size());
        pattern.remove_prefix(mark + 1);
        const std::string_view next = pattern.substr(0, pattern.find('%'));
        const std::size_t end =
            pattern.find('%') == std::string_view::npos ? text.rfind(next) : text.find(next);
        if (end == std::string_view::npos) return std::nullopt;
        values.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
    }
}

std::string filled(std::string_view pattern, const std::vector<std::string>& values) {
    std::string text;
    for (std::size_t i = 0; i < pattern.size(); ++i)
        if (pattern[i] == '%')
            text += shortened(values.at(std::size_t(pattern[++i] - '1')), longest_value);
        else
            text += pattern[i];
    return text;
}

/// `{http://...}P_1` as `P_1`: there is one namespace, and it fills a line.
std::string without_namespaces(std::string text) {
    for (std::size_t at = 0; (at = text.find("{http", at)) != std::string::npos;) {
        const std::size_t end = text.find('}', at);
        if (end == std::string::npos) break;
        text.erase(at, end + 1 - at);
    }
    return text;
}

}  // namespace

ValidatorWords in_polish(const std::string& detail) {
    const std::size_t colon = detail.find(": ");
    if (!detail.starts_with("Wiersz ") || colon == std::string::npos) return {detail, ""};
    const std::string where = detail.substr(0, colon + 2),
                      words = without_namespaces(detail.substr(colon + 2));
    for (const auto& [english, polish] : sentences)
        if (const auto values = fit(english, words)) return {where + filled(polish, *values), ""};
    return {where, words};
}

}  // namespace tavrix::sandbox
