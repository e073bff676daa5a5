#pragma once

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "cli/exit_code.h"

namespace tavrix::cli {

using Json = nlohmann::ordered_json;

/// --json: what a command says is one JSON document on standard output, for programs.
void add_json_option(CLI::App& command, bool& json);

/// Writes that document. Bytes that are no text, of a file's name perhaps, are replaced.
void print(const Json& answer);

/// Ends a command: `main` says the text on stderr, and gives it as "result" to programs.
struct Failure : std::runtime_error {
    Failure(ExitCode with, const std::string& text) : std::runtime_error(text), code(with) {}
    ExitCode code;
};

}  // namespace tavrix::cli
