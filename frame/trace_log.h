#pragma once

#include <atomic>

#include "ports/clock.h"
#include "ports/code_page.h"
#include "ports/files.h"
#include "ports/locale.h"
#include "ports/trace.h"

namespace tavrix::frame {

/// The one switch of the process. It starts off and, once on, stays on.
using TraceSwitch = std::atomic<bool>;

/// What the trace log reaches outside. The references outlive it.
struct TracePorts {
    ports::Files& files;
    ports::Clock& clock;
    ports::Locale& locale;
    const ports::CodePage& code_page;
};

/// Lines in C:\quensql\debug-info.dta.quen, while the file c:\quensql\debug-Info.quen was seen
/// once. A line is date and time in the locale's general format, ":", the library's version, ":",
/// the entry, CR LF, in the ANSI code page. The file is opened and closed for every line, so that
/// it can be read, moved or deleted at any time. The folder is not made.
class TraceLog final : public ports::Trace {
  public:
    TraceLog(TraceSwitch& is_on, TracePorts ports) : is_on_(is_on), ports_(ports) {}

    void look_for_switch() noexcept override;
    void write(base::TextView entry) noexcept override;

  private:
    TraceSwitch& is_on_;
    TracePorts ports_;
};

}  // namespace tavrix::frame
