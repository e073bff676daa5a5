#include "frame/trace_log.h"

#include "frame/version_text.h"

namespace tavrix::frame {
namespace {

constexpr base::TextView switch_file = u"c:\\quensql\\debug-Info.quen";
constexpr base::TextView log_file = u"C:\\quensql\\debug-info.dta.quen";

}  // namespace

void TraceLog::look_for_switch() noexcept {
    try {
        if (ports_.files.is_file(switch_file)) is_on_ = true;
    } catch (...) {
        // No switch that could be found.
    }
}

void TraceLog::write(base::TextView entry) noexcept {
    if (!is_on_) return;
    try {
        base::Text line = ports_.locale.general_date(ports_.clock.now_local());
        line.append(u":").append(version_text()).append(u":").append(entry).append(u"\r\n");
        ports_.files.append(log_file, ports_.code_page.to_bytes(line));
    } catch (...) {
        // A missing or read-only folder, a full disk: the call that is traced goes on.
    }
}

}  // namespace tavrix::frame
