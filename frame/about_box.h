#pragma once

#include <functional>

#include "base/text.h"

namespace tavrix::frame {

/// What the About box shows and does.
struct AboutBox {
    /// The product's name; the form says around it what it is.
    base::Text title;
    /// The number alone.
    base::Text version;
    /// A few lines, separated by line feeds.
    base::Text description;
    /// What the system-information button does. Must not throw.
    std::function<void()> show_system_information;
};

/// The About box's window: modal, and open once, as mail::MessageWindow is.
class AboutWindow {
  public:
    virtual ~AboutWindow() = default;
    virtual void show(const AboutBox& box) noexcept = 0;
};

}  // namespace tavrix::frame
