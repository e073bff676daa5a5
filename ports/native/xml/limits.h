#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "base/text.h"

namespace tavrix::ports {

/// What the XML libraries may do in this thread while one of these stands: read files of `folder`
/// by the last part of whatever name a document gives them, nothing where it is empty, and take so
/// much memory and time. Without one they do what they do in any program. One at a time for a
/// thread.
class XmlLimits {
  public:
    static constexpr std::size_t most_memory_bytes = std::size_t{1} << 30;
    /// The libraries are asked for memory all the time, and get none any more after this.
    static constexpr std::chrono::seconds longest{60};

    /// \param folder with a separator at its end.
    explicit XmlLimits(std::string folder);
    ~XmlLimits();
    XmlLimits(const XmlLimits&) = delete;
    XmlLimits& operator=(const XmlLimits&) = delete;

    /// What was too much, in words; the empty text when nothing was.
    base::Text refusal() const;
};

}  // namespace tavrix::ports
