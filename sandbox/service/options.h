// What a sandbox can be told before it starts.
#pragma once

#include <string>
#include <vector>

#include "sandbox/basics/clock.h"
#include "sandbox/exchange/faults.h"

namespace tavrix::sandbox {

/// How long something stays unfinished: until the time has passed and it has been asked about that
/// often.
struct Pace {
    int delay_ms = 0;
    int polls = 0;
};

struct Options {
    std::string bind_address = "127.0.0.1";
    /// 0 picks a free port.
    int port = 8517;
    std::string port_file;
    bool https = false;
    std::string ca_file_out;
    /// Folder of the database; empty keeps everything in memory.
    std::string data_folder;
    /// Folder of the invoice schemas; empty checks well-formedness and the main fields only.
    std::string schema_folder;
    /// KSeF tokens to accept. With none named, every token of the right shape is accepted.
    std::vector<std::string> tokens;
    /// Files (PEM) of KSeF certificates that companies have.
    std::vector<std::string> certificate_files;
    /// Nothing but what is published; otherwise what older clients send is taken as well.
    bool strict = false;
    /// Entries of lists in the order in which older clients read them by position.
    bool classic_order = false;
    bool rate_limits = false;
    bool rotate_keys = false;
    bool refuse_attachments = false;
    Pace authentication;
    Pace invoice_accepted;
    Pace invoice_processing;
    Pace session_closing;
    TimeFormat time;
    std::vector<Fault> faults;
    int access_token_minutes = 15;
    int log_size = 2000;
    bool quiet = false;
    bool list_steps = false;
};

}  // namespace tavrix::sandbox
