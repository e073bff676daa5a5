#include "cli/progress_bar.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "console/console.h"

namespace tavrix::cli {

ProgressBar::ProgressBar(std::uint64_t total, bool wanted)
    : total_(std::max<std::uint64_t>(total, 1)),
      shown_(wanted && console::is_error_output_watched()) {}

ProgressBar::~ProgressBar() {
    if (shown_ && last_percent_ >= 0) std::fputc('\n', stderr);
}

void ProgressBar::add(std::int64_t bytes) {
    const std::lock_guard lock(lock_);
    moved_ += bytes;
    const double share =
        std::clamp(static_cast<double>(moved_) / static_cast<double>(total_), 0., 1.);
    const int percent = static_cast<int>(share * 100);
    if (!shown_ || percent == last_percent_) return;
    last_percent_ = percent;
    constexpr std::size_t width = 40;
    std::string bar(static_cast<std::size_t>(share * width), '#');
    bar.resize(width, '.');
    std::fprintf(stderr, "\r[%s] %3d%%  %.1f / %.1f MB", bar.c_str(), percent,
                 static_cast<double>(moved_) / 1e6, static_cast<double>(total_) / 1e6);
}

}  // namespace tavrix::cli
