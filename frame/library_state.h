#pragma once

#include "frame/hand_over.h"
#include "frame/trace_log.h"

namespace tavrix::frame {

/// Everything that outlives a call: there is one of it for as long as the library stays loaded.
/// Instances of the public classes share nothing else.
struct LibraryState {
    TraceSwitch trace_switch = false;
    HandOver hand_over;
};

}  // namespace tavrix::frame
