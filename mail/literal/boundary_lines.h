#pragma once

#include <optional>
#include <vector>

#include "base/profile.h"
#include "base/text.h"

namespace tavrix::mail {

/// Reads the lines of a text that end by CR LF; behind the last of them stands one more, which may
/// be empty.
class Lines {
  public:
    explicit Lines(base::TextView text) : text_(text) {}

    bool at_end() const noexcept { return at_ > text_.size(); }
    base::TextView take();
    /// What was not taken yet.
    base::TextView rest() const { return at_end() ? base::TextView() : text_.substr(at_); }
    std::size_t position() const noexcept { return at_; }
    void move_to(std::size_t position) noexcept { at_ = position; }

  private:
    base::TextView text_;
    std::size_t at_ = 0;
};

/// A line between two parts.
struct BoundaryLine {
    std::size_t begin = 0;
    /// Behind its CR LF.
    std::size_t end = 0;
    /// No part follows.
    bool closes = false;
};

/// Knows which lines of a message's body stand between its parts: those made of the boundary that
/// its header names, and those that begin as the lines of common mail programs do, whatever the
/// header says.
///
/// The profile `classic` does not know a closing line for one, unless it begins so, and takes an
/// empty boundary for one; `current` sees both for what they are.
class BoundaryLines {
  public:
    explicit BoundaryLines(base::Profile profile) : profile_(profile) {}

    /// Looks for a boundary in one line of the message's header.
    void read_header_line(base::TextView line);
    /// The first boundary line at or behind `at`, where a line of `body` begins.
    std::optional<BoundaryLine> next(base::TextView body, std::size_t at) const;

  private:
    void take_boundary(base::TextView boundary);
    bool is_boundary(base::TextView line) const;
    bool closes(base::TextView line) const;
    bool holds_boundary_and_hyphen(base::TextView line) const;

    base::Profile profile_;
    base::Text boundary_;
    /// As the header has it, its closing quotation mark included.
    base::Text as_read_;
    /// Knuth, Morris and Pratt's table for the boundary and a hyphen: a message made for it would
    /// otherwise take hours.
    std::vector<std::size_t> restart_{0};
};

}  // namespace tavrix::mail
