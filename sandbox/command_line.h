// What can be set on the command line, read into Options.
#pragma once

#include "sandbox/service/options.h"

namespace tavrix::sandbox {

/// Reads the command line. With --help, --version or a mistake it prints what is due and returns
/// the exit status instead of options.
struct CommandLine {
    std::optional<Options> options;
    int exit_status = 0;
};
CommandLine read_command_line(int count, char** arguments);

}  // namespace tavrix::sandbox
