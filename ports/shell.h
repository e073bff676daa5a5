#pragma once

#include "base/text.h"

namespace tavrix::ports {

/// Programs and messages of the user's desktop. Failures throw base::AutomationError unless told
/// otherwise.
class Shell {
  public:
    virtual ~Shell() = default;
    /// What the user does with the right mouse button on `item` of `folder`.
    virtual void invoke_verb(base::TextView folder, base::TextView item, base::TextView verb) = 0;
    /// Starts a program and waits for its end, however long; false when it could not be started.
    virtual bool run_and_wait(base::TextView command_line, bool hidden) = 0;
    /// Starts the program at `path`, spaces and all, with a normal window and no arguments, and
    /// does not wait; false when it could not be started.
    virtual bool start(base::TextView path) = 0;
    /// `text` with the value of each environment variable in the place of its %NAME%.
    virtual base::Text expand(base::TextView text) = 0;
    /// A message with an OK button; `help_context` goes along as the message's number in a help
    /// file. None where nobody sees the desktop.
    virtual void show_message(base::TextView text, std::int32_t help_context) = 0;
};

}  // namespace tavrix::ports
