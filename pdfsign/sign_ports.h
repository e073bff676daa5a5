#pragma once

#include "ports/clock.h"
#include "ports/code_page.h"
#include "ports/files.h"
#include "ports/signing.h"

namespace tavrix::pdfsign {

/// What signing needs; the adapters outlive whoever is given them.
struct PdfPorts {
    ports::DataFiles& files;
    ports::Clock& clock;
    ports::CodePage& code_page;
    ports::Signing& signing;
};

}  // namespace tavrix::pdfsign
