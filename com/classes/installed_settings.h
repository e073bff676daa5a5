#pragma once

#include "frame/settings.h"

namespace tavrix::com {

/// Where the DLL stands, with a backslash at the end.
base::Text installed_folder();
/// Where the user's own programs keep what they need, with a backslash at the end; "" when nobody
/// knows. An installed DLL's folder is often the administrator's alone.
base::Text user_folder();

/// The settings file beside the DLL, wherever that stands and whatever it was renamed to, as it is
/// now: a change needs no restart of the host. Throws base::AutomationError when the file cannot be
/// taken as it stands.
frame::Settings load_installed_settings();

/// The settings of one object: read by its first call that needs them, so that objects can be
/// created, and whatever needs no settings works, beside a file that cannot be taken. Such a call
/// reads again until the file can.
class SettingsOnDemand {
  public:
    SettingsOnDemand() = default;
    SettingsOnDemand(const SettingsOnDemand&) = delete;
    SettingsOnDemand& operator=(const SettingsOnDemand&) = delete;

    /// Throws like load_installed_settings.
    void read();
    /// The defaults until they were read; stays where it is.
    const frame::Settings& get() const noexcept { return settings_; }

  private:
    frame::Settings settings_;
    bool known_ = false;
};

}  // namespace tavrix::com
