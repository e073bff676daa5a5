#pragma once

#include "ports/shell.h"

namespace tavrix::windows {

/// The user's desktop: Shell.Application, processes and message boxes.
class DesktopShell final : public ports::Shell {
  public:
    void invoke_verb(base::TextView folder, base::TextView item, base::TextView verb) override;
    bool run_and_wait(base::TextView command_line, bool hidden) override;
    bool start(base::TextView path) override;
    base::Text expand(base::TextView text) override;
    void show_message(base::TextView text, std::int32_t help_context) override;
};

}  // namespace tavrix::windows
