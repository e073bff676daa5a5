#pragma once

#include <memory>

#include "ports/clock.h"
#include "ports/code_page.h"
#include "ports/xml.h"

namespace tavrix::ports {

/// The system's clock and the thread's sleep.
std::unique_ptr<Clock> make_native_clock();
/// Code page 1250, whatever the process's locale: invoices and databases come from Polish Windows
/// systems.
std::unique_ptr<CodePage> make_native_code_page();
/// Base64 as MSXML does it, line breaks included.
std::unique_ptr<Xml> make_native_xml();

}  // namespace tavrix::ports
