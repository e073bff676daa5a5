#pragma once

#include <CLI/CLI.hpp>

#include "cli/exit_code.h"

namespace tavrix::cli {

/// Adds a subcommand to `app`; when it was chosen, its callback leaves the exit code in
/// `exit_code`.
void add_send_command(CLI::App& app, int& exit_code);
void add_batch_command(CLI::App& app, int& exit_code);
void add_split_command(CLI::App& app, int& exit_code);
void add_pack_command(CLI::App& app, int& exit_code);
void add_reconcile_command(CLI::App& app, int& exit_code);
void add_pull_command(CLI::App& app, int& exit_code);
void add_hash_command(CLI::App& app, int& exit_code);
void add_token_command(CLI::App& app, int& exit_code);
void add_link_commands(CLI::App& app, int& exit_code);
void add_qr_command(CLI::App& app, int& exit_code);
void add_barcode_command(CLI::App& app, int& exit_code);
void add_mail_command(CLI::App& app, int& exit_code);
void add_validate_command(CLI::App& app, int& exit_code);
void add_render_command(CLI::App& app, int& exit_code);
/// To `mail`, the command of everything about mail.
void add_mail_fetch_command(CLI::App& mail, int& exit_code);
void add_mail_send_command(CLI::App& mail, int& exit_code);
void add_pdf_commands(CLI::App& app, int& exit_code);

}  // namespace tavrix::cli
