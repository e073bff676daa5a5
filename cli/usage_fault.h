#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace tavrix::cli {

/// What is wrong with a command line, in Polish; a text of the parsing library's that has no
/// translation as it is.
std::string usage_fault(const CLI::ParseError& error);

}  // namespace tavrix::cli
