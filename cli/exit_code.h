#pragma once

namespace tavrix::cli {

/// What the process ends with; `tavrix --help` lists them, scripts rely on them.
enum ExitCode : int {
    exit_done = 0,
    exit_failed = 1,           ///< KSeF, the network or the database said no; the text says what
    exit_usage = 2,            ///< the command line or a file it names
    exit_accepted_no_upo = 3,  ///< the invoice has its KSeF number, the UPO could not be stored
    exit_settings = 4,         ///< the settings file cannot be read
};

}  // namespace tavrix::cli
