#pragma once

#include <CLI/CLI.hpp>

namespace tavrix::cli {

/// As the command line's library has them, for paths in UTF-8 on any system.
CLI::Validator existing_file();
CLI::Validator existing_folder();

}  // namespace tavrix::cli
