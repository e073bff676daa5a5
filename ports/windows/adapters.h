#pragma once

#include <memory>

#include "ports/clock.h"
#include "ports/code_page.h"
#include "ports/file_store.h"
#include "ports/files.h"
#include "ports/instant_mail.h"
#include "ports/locale.h"
#include "ports/printers.h"
#include "ports/query_connection.h"
#include "ports/registry.h"
#include "ports/shell.h"
#include "ports/surface.h"
#include "ports/system_version.h"
#include "ports/text_files.h"
#include "ports/xml.h"
#include "ports/xml_documents.h"

namespace tavrix::ports {

/// Collaboration Data Objects; null where they are not registered.
std::unique_ptr<InstantMailer> make_cdo_mailer();
/// ADO, late-bound; nothing of it is touched before it opens.
std::unique_ptr<QueryConnection> make_ado_query();
/// The system's clock and the thread's sleep.
std::unique_ptr<Clock> make_windows_clock();
/// The code page that the system is set to, whichever it is.
std::unique_ptr<CodePage> make_windows_code_page();
std::unique_ptr<DataFiles> make_windows_files();
std::unique_ptr<FileStore> make_windows_file_store();
/// What the user chose in the system's regional settings.
std::unique_ptr<Locale> make_windows_locale();
/// Drawings become enhanced metafiles; files are loaded by the system.
std::unique_ptr<Pictures> make_windows_pictures();
std::unique_ptr<Printers> make_windows_printers();
/// The registry through its ANSI calls.
std::unique_ptr<Registry> make_windows_registry();
/// The user's desktop: Shell.Application, processes and message boxes.
std::unique_ptr<Shell> make_windows_shell();
/// The scripting runtime's file system object, made for each file.
std::unique_ptr<TextFiles> make_windows_text_files();
/// The Windows that the host runs on.
SystemVersion windows_version() noexcept;
/// The XML documents of the platform, each created under its own name for each conversion.
std::unique_ptr<Xml> make_windows_xml();
/// MSXML 6.0, its objects made for each document.
std::unique_ptr<XmlDocuments> make_windows_xml_documents();

}  // namespace tavrix::ports
