#pragma once

namespace tavrix::windows {

/// Whether somebody can see this process's windows. A service's windows are made and shown like any
/// other, and wait for a user who never comes.
bool desktop_is_seen() noexcept;

}  // namespace tavrix::windows
