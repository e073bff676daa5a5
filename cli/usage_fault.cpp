#include "cli/usage_fault.h"

#include <regex>

namespace tavrix::cli {
namespace {

// The library keeps the names only inside its English sentences.
struct Translation {
    const char* english;
    const char* polish;
};

constexpr Translation translations[] = {
    {"A subcommand is required", "brak polecenia"},
    {"(?:Exactly|At least) 1 option from \\[(.+)\\] is required", "brak jednej z: $1"},
    {"Exactly 1 option from \\[(.+)\\] is required and (\\d+) were given",
     "tylko jedna z: $1; podano $2"},
    {"(.+) is required", "brak $1"},
    {"(.+): \\d+ required (?:.+) missing", "$1: brak wartości"},
    {"(.+): At (?:[Ll]east|[Mm]ost) (\\d+) required but received (\\d+)",
     "$1: podano wartości: $3, a ma być ich: $2"},
    {"The following arguments? (?:was|were) not expected: (.+)", "niezrozumiałe: $1"},
    {"Could not convert: (.+) = (.*)", "$1: zła wartość: $2"},
    {"(.+): Value (.+) not in range (.+) to (.+)", "$1: $2 jest poza zakresem od $3 do $4"},
    {"(.+): (.*) not in \\{(.+)\\}", "$1: $2 nie jest jednym z: $3"},
    {"(.+) requires (.+)", "$1 wymaga $2"},
    {"(.+) excludes (.+)", "$1 wyklucza $2"},
};

// The matcher calls itself for each letter, and an argument may have a hundred thousand.
constexpr std::size_t most_translated = 2000;

}  // namespace

std::string usage_fault(const CLI::ParseError& error) {
    const std::string text = error.what();
    if (text.size() > most_translated) return text;
    for (const auto& [english, polish] : translations) {
        const std::regex sentence(english);
        if (std::regex_match(text, sentence)) return std::regex_replace(text, sentence, polish);
    }
    return text;
}

}  // namespace tavrix::cli
