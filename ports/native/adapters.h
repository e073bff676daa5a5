#pragma once

#include <memory>
#include <string>

#include "ports/clock.h"
#include "ports/code_page.h"
#include "ports/file_store.h"
#include "ports/files.h"
#include "ports/locale.h"
#include "ports/text_files.h"
#include "ports/xml.h"
#include "ports/xml_documents.h"

namespace tavrix::ports {

/// The system's clock and the thread's sleep.
std::unique_ptr<Clock> make_native_clock();
/// Code page 1250, whatever the process's locale: invoices and databases come from Polish Windows
/// systems.
std::unique_ptr<CodePage> make_native_code_page();
/// The file system. `drive_c` (UTF-8) is the folder that stands for "C:" in the paths of Windows;
/// empty for none, and then no such file exists.
std::unique_ptr<DataFiles> make_native_files(std::string drive_c);
/// Where files go that came from outside, on the same drive.
std::unique_ptr<FileStore> make_native_file_store(std::string drive_c);
/// Dates as a Polish system writes them: 2026-11-14 21:49:05.
std::unique_ptr<Locale> make_native_locale();
/// Text files in code page 1250, on the same drive.
std::unique_ptr<TextFiles> make_native_text_files(std::string drive_c);
/// Base64 as MSXML does it, line breaks included.
std::unique_ptr<Xml> make_native_xml();
/// libxml2 and libxslt. Their errors name lines and columns as those of the other component do.
std::unique_ptr<XmlDocuments> make_native_xml_documents();

}  // namespace tavrix::ports
