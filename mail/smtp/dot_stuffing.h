#pragma once

#include <algorithm>

#include "base/text.h"

namespace tavrix::mail::smtp {

/// A line that begins with a dot gets another one (RFC 5321, section 4.5.2), however the bytes
/// come.
class DotStuffing {
  public:
    /// Valid until the next call.
    base::ByteView stuffed(base::ByteView bytes) {
        out_.clear();
        const std::string_view text = base::chars_of(bytes);
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
            if (at_line_start_ && text[at] == '.') out_ += '.';
            out_ += text.substr(at, end - at);
            at_line_start_ = out_.ends_with('\n');
            at = end;
        }
        return base::bytes_of(out_);
    }

  private:
    std::string out_;
    bool at_line_start_ = true;
};

}  // namespace tavrix::mail::smtp
