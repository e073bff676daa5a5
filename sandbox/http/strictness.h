// What is refused of a request's framing beyond the parser's own rules: above all whatever two
// readers could understand differently, for there the next request hides.
#pragma once

#include <string_view>

#include "sandbox/exchange/exchange.h"

namespace tavrix::sandbox {

constexpr std::size_t longest_request_line = 8 * 1024;
/// Request line and header list together; also what a chunk's first line or the trailers may take.
constexpr std::size_t longest_head = 32 * 1024;
constexpr std::size_t most_headers = 100;

/// Why the transport refuses a request; status 0 when it does not.
struct TransportRefusal {
    int status = 0;
    std::string why;
};

/// Follows the head of a request as its bytes come, so that what is wrong is refused before the end
/// that may never come.
class HeadScanner {
  public:
    enum class Progress { wanting, whole, refused };
    /// \param received all that has come of this head so far.
    Progress scan(std::string_view received);
    /// Where the request line begins: empty lines before it are skipped (RFC 9112, 2.2).
    std::size_t begin() const { return begin_; }
    const TransportRefusal& refusal() const { return refusal_; }

  private:
    Progress refuse(int status, const char* why);
    Progress end_line();

    std::size_t at_ = 0, begin_ = 0, line_ = 0, lines_ = 0;
    char last_ = 0;
    TransportRefusal refusal_;
};

/// Judges a request whose head has been parsed.
TransportRefusal judge_framing(const Request& request, bool http_1_1);

}  // namespace tavrix::sandbox
