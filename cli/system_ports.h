#pragma once

#include <memory>
#include <string>

#include "ports/clock.h"
#include "ports/code_page.h"
#include "ports/database.h"
#include "ports/file_store.h"
#include "ports/files.h"
#include "ports/text_files.h"

namespace tavrix::cli {

/// The adapters of the system that the program runs on.
std::unique_ptr<ports::Clock> make_clock();
/// Code page 1250 on any system: invoices and databases come from Polish ones.
std::unique_ptr<ports::CodePage> make_code_page();
/// \param drive_c the folder that stands for "C:" where the system has no such drive.
std::unique_ptr<ports::DataFiles> make_files(const std::string& drive_c);
std::unique_ptr<ports::FileStore> make_file_store();
std::unique_ptr<ports::TextFiles> make_text_files();

/// An ADO connection, opened. Throws Failure where the system has no ADO.
std::unique_ptr<ports::Database> open_ado(const std::string& connection_text);

}  // namespace tavrix::cli
