#pragma once

#include <memory>

#include "pdfsign/first_page.h"
#include "pdfsign/form.h"
#include "pdfsign/pdf_source.h"

namespace tavrix::pdfsign {

enum class Reading { strict, repairing };

/// A document that was read as far as signing needs it.
struct OpenDocument {
    std::unique_ptr<ports::FileReader> file;
    FileEnds ends;
    /// Reads from `file`, so it goes first.
    std::shared_ptr<PdfSource> source;
    std::shared_ptr<QPDF> pdf;
    FirstPage page;
    Form form;
};

/// Throws base::AutomationError for what is no PDF or needs a password, and anything else derived
/// from std::exception for a damaged one; libqpdf may also do that later, because it reads objects
/// when they are asked for.
OpenDocument open_document(std::unique_ptr<ports::FileReader> file, Reading reading);

/// Throws std::exception unless `document`, which was read by repairing it, seems to be all there
/// and carries no signature, which writing it anew would break.
void expect_repairable(OpenDocument& document);

/// All of `document`, written anew. Nothing stands at `path` when it throws.
void write_repaired(OpenDocument& document, ports::DataFiles& files, base::TextView path);

}  // namespace tavrix::pdfsign
