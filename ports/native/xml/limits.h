#pragma once

#include <cstddef>
#include <string>

namespace tavrix::ports {

/// What the XML libraries may do in this thread while one of these stands: read files of `folder`
/// by the last part of whatever name a document gives them, nothing where it is empty, and take so
/// much memory. Without one they do what they do in any program. One at a time for a thread.
class XmlLimits {
  public:
    static constexpr std::size_t most_memory_bytes = std::size_t{1} << 30;

    /// \param folder with a separator at its end.
    explicit XmlLimits(std::string folder);
    ~XmlLimits();
    XmlLimits(const XmlLimits&) = delete;
    XmlLimits& operator=(const XmlLimits&) = delete;

    /// Whether memory was asked for and not given.
    bool ran_out_of_memory() const noexcept;
};

}  // namespace tavrix::ports
