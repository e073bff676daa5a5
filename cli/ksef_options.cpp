#include "cli/ksef_options.h"

#include <cstdio>
#include <fstream>
#include <iostream>

#include "base/path.h"
#include "console/console.h"

namespace tavrix::cli {

std::int32_t environment_number(const std::string& name) {
    if (name == "prod" || name == "1") return 1;
    if (name == "demo" || name == "0") return 0;
    return 2;
}

void add_environment_option(CLI::App& command, std::string& environment) {
    command.add_option("--env", environment, "Środowisko KSeF: prod, demo albo test")
        ->check(CLI::IsMember({"prod", "demo", "test", "0", "1", "2"}))
        ->capture_default_str();
}

void add_nip_option(CLI::App& command, std::string& nip) {
    command.add_option("--nip", nip, "NIP firmy, ten sam co w tokenie")->required();
}

void add_database_option(CLI::App& command, std::string& file) {
    command
        .add_option("--db", file,
                    "Plik bazy SQLite z dokumentami; w Windows także tekst połączenia ADO, np. "
                    "Provider=...")
        ->required();
}

void add_form_options(CLI::App& command, FormOptions& form) {
    command.add_option("--system-code", form.system_code, "Kod systemowy formularza")
        ->capture_default_str();
    command.add_option("--schema-version", form.schema_version, "Wersja schematu")
        ->capture_default_str();
    command.add_option("--form-code", form.form_code, "Wartość kodu formularza")
        ->capture_default_str();
}

void add_token_options(CLI::App& command, TokenSource& source) {
    command.add_option("--token", source.token,
                       "Token KSeF (REFERENCJA|nip-NNNNNNNNNN|SEKRET); bezpieczniej --token-file "
                       "albo TAVRIX_TOKEN");
    command.add_option("--token-file", source.file, "Plik, w którym jest tylko token");
}

base::SecretText token_from(const TokenSource& source) {
    if (!source.token.empty()) return base::from_secret_utf8(source.token);
    if (!source.file.empty()) {
        const base::SecretUtf8 line = read_secret_line(source.file);
        return base::from_secret_utf8(
            line.view().substr(0, line.view().find_last_not_of("\n\r ") + 1));
    }
    if (const char* variable = console::variable("TAVRIX_TOKEN"))
        return base::from_secret_utf8(variable);
    throw CLI::RequiredError("--token, --token-file albo zmienna TAVRIX_TOKEN");
}

// Without a buffer of the stream's own, which nobody wipes.
base::SecretUtf8 read_secret_file(const std::string& path) {
    std::ifstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.open(base::path_of(path), std::ios::binary);
    base::SecretUtf8 text;
    for (char c = 0; file.get(c);) text += c;
    if (!file.is_open() || file.bad()) throw CLI::ValidationError(path, "nie można odczytać pliku");
    return text;
}

namespace {

base::SecretUtf8 read_secret_input() {
    std::setvbuf(stdin, nullptr, _IONBF, 0);
    base::SecretUtf8 text;
    for (char c = 0; std::cin.get(c);) text += c;
    return text;
}

}  // namespace

base::SecretUtf8 read_secret_line(const std::string& path) {
    const base::SecretUtf8 file = path == "-" ? read_secret_input() : read_secret_file(path);
    std::string_view line = file.view();
    if (line.starts_with("\xEF\xBB\xBF")) line.remove_prefix(3);
    // Only the end of the line: a password may end with blanks.
    for (const char end : {'\n', '\r'}) {
        if (line.ends_with(end)) line.remove_suffix(1);
    }
    return base::SecretUtf8(line);
}

}  // namespace tavrix::cli
