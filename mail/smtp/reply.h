#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/text.h"

namespace tavrix::mail::smtp {

/// What a server answers (RFC 5321, section 4.2).
struct Reply {
    int code = 0;
    /// The words of each line.
    std::vector<std::string> lines;

    bool is_positive() const noexcept { return code >= 200 && code < 300; }
    /// The code and the words, on one line and without what would steer a terminal.
    base::Text text() const;
};

/// Puts replies together, however their bytes come.
class ReplyReader {
  public:
    void take(std::string_view bytes) { pending_ += bytes; }
    /// The next whole reply. Throws base::AutomationError for what is none: a line without a code,
    /// one that has no end, lines that have none.
    std::optional<Reply> next();
    bool is_empty() const noexcept { return pending_.empty() && reply_.lines.empty(); }

  private:
    std::string pending_;
    Reply reply_;
};

}  // namespace tavrix::mail::smtp
