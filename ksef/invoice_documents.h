#pragma once

#include "ksef/ports.h"

namespace tavrix::ksef {

/// The text of `path` in the system's code page, without the first mark of UTF-8 as it reads
/// there. Throws base::AutomationError for a file that cannot be read.
base::Text load_invoice(ports::TextFiles& files, const base::Text& path);

/// The first error of `xml` before the schema at the path `schema`, with its line and column; the
/// empty text for a valid document. Where the schema itself is refused: the empty text under
/// SchemaNamespace::empty, as hosts know it, and why under its own.
base::Text check_invoice(ports::XmlDocuments& documents, const base::Text& xml,
                         const base::Text& schema, ports::SchemaNamespace schema_namespace,
                         const std::function<void(base::TextView)>& show_message);

/// Writes `xml` as the stylesheet `xsl` shows it to the file `path`, in the bytes of `html_page`.
/// The empty text, or what failed.
base::Text write_html(ports::XmlDocuments& documents, const ports::CodePage& code_page,
                      ports::DataFiles& files, const base::Text& xml, const base::Text& xsl,
                      const base::Text& path);

/// A page's bytes in the system's code page; what it lacks becomes a numeric reference. A text that
/// a host read one character for each byte of UTF-8 becomes UTF-8 again. Where the page names its
/// own encoding, the name becomes that of these bytes.
base::Bytes html_page(const ports::CodePage& code_page, base::TextView page);

/// The same in UTF-8.
std::string html_page_utf8(base::TextView page);

}  // namespace tavrix::ksef
