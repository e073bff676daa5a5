#pragma once

#include "ksef/online_session.h"
#include "ports/database.h"

namespace tavrix::ksef {

/// Sends the package at `path` in a batch session of an authenticated client, encrypted as a whole
/// and as one part; a row of Ksef_sesje keeps the session's reference once the package is uploaded.
///
/// Returns the empty text once the session is closed, or the text of what failed. Raises nothing.
base::Text send_in_batch_session(KsefPorts& ports, Client& client, ports::Database& database,
                                 const base::Text& path, const FormCode& form);

/// Adds a row to Ksef_sesje, and notes the package's invoices. Throws base::AutomationError when
/// there is no row.
void record_batch_session(KsefPorts& ports, ports::Database& database, const base::Text& path,
                          const std::string& reference);

/// Adds what the manifest beside the package says to the file of sent packages. One that has none
/// is none the worse: it is reconciled by what the service lists. Raises nothing.
void note_sent_package(KsefPorts& ports, const base::Text& path, const std::string& reference);

}  // namespace tavrix::ksef
