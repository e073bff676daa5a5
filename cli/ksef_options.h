#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>

#include "base/secret.h"

namespace tavrix::cli {

/// "prod", "demo" or "test", as the methods of KseF_comm number them.
std::int32_t environment_number(const std::string& name);
void add_environment_option(CLI::App& command, std::string& environment);

/// Whose documents, and where they are.
void add_nip_option(CLI::App& command, std::string& nip);
void add_database_option(CLI::App& command, std::string& file);

/// The form that invoices are sent in.
struct FormOptions {
    std::string system_code = "FA (3)";
    std::string schema_version = "1-0E";
    std::string form_code = "FA";
};
void add_form_options(CLI::App& command, FormOptions& form);

/// Where a command's KSeF token comes from.
struct TokenSource {
    std::string token;
    std::string file;
};
void add_token_options(CLI::App& command, TokenSource& source);

/// The token from --token, from --token-file or from $TAVRIX_TOKEN, which other users of the
/// machine do not see in the list of processes. Throws CLI::RequiredError when there is none.
base::SecretText token_from(const TokenSource& source);

/// A file's content. Throws CLI::ValidationError when it cannot be read.
base::SecretUtf8 read_secret_file(const std::string& path);
/// What stands in it, or in standard input where `path` is "-", before the blanks and line ends at
/// its end, without the mark that editors put in front of UTF-8.
base::SecretUtf8 read_secret_line(const std::string& path);

}  // namespace tavrix::cli
