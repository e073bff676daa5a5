#pragma once

#include "base/text.h"
#include "windows/automation.h"

namespace tavrix::com {

/// A control's device with the control's own font, for measuring.
class ControlDevice {
  public:
    explicit ControlDevice(HWND control) noexcept;
    ~ControlDevice();
    ControlDevice(const ControlDevice&) = delete;
    ControlDevice& operator=(const ControlDevice&) = delete;
    HDC get() const noexcept { return device_; }

  private:
    HWND control_;
    HDC device_;
    HGDIOBJ font_before_;
};

base::Text text_of_control(HWND control);

/// The pixels that a text takes in the control's font when no line may be wider than `width_px`.
/// `format` is DrawText's; a word that is wider is only broken with DT_EDITCONTROL.
SIZE size_of_text(HWND control, const base::Text& text, int width_px, UINT format) noexcept;

}  // namespace tavrix::com
