#pragma once

#include "base/text.h"

namespace tavrix::ports {

/// Files, programs and messages of the user's desktop. Failures throw base::AutomationError unless
/// told otherwise.
class Shell {
  public:
    virtual ~Shell() = default;
    virtual bool file_exists(base::TextView path) = 0;
    virtual void copy_file(base::TextView from, base::TextView to) = 0;
    /// What the user does with the right mouse button on `item` of `folder`.
    virtual void invoke_verb(base::TextView folder, base::TextView item, base::TextView verb) = 0;
    /// Starts a program and waits for its end, however long; false when it could not be started.
    virtual bool run_and_wait(base::TextView command_line, bool hidden) = 0;
    /// A message with an OK button; `help_context` goes along as the message's number in a help
    /// file.
    virtual void show_message(base::TextView text, std::int32_t help_context) = 0;
};

}  // namespace tavrix::ports
