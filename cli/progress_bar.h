#pragma once

#include <cstdint>
#include <mutex>

namespace tavrix::cli {

/// A line on stderr that shows how many of `total` bytes were moved, where a person looks at it:
/// nothing is written to a file or a pipe. May be told by several threads.
class ProgressBar {
  public:
    ProgressBar(std::uint64_t total, bool wanted);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    /// Fewer than none when what was moved does not count any more.
    void add(std::int64_t bytes);

  private:
    std::uint64_t total_;
    bool shown_;
    std::mutex lock_;
    std::int64_t moved_ = 0;
    int last_percent_ = -1;
};

}  // namespace tavrix::cli
