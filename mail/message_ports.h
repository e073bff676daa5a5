#pragma once

#include <functional>

#include "base/profile.h"
#include "ports/clock.h"
#include "ports/code_page.h"
#include "ports/file_store.h"
#include "ports/system_version.h"
#include "ports/trace.h"

namespace tavrix::mail {

/// Everything outside that reading a message reaches. The references outlive whoever has them.
struct MessagePorts {
    ports::FileStore& files;
    ports::Clock& clock;
    const ports::CodePage& code_page;
    ports::Trace& trace;
    ports::SystemVersion system{};
    /// Asked by each call that needs it; throws base::AutomationError with what is wrong with the
    /// settings file.
    std::function<base::Profile()> profile = [] { return base::Profile::classic; };
};

/// "YYYYMMDDhhmmss": what a file is called that has no name.
base::Text name_of_moment(const base::DateTime& moment);

}  // namespace tavrix::mail
