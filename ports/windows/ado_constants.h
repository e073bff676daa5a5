#pragma once

#include <cstdint>

namespace tavrix::windows {

// Numbers of the ADO type library that more than one file sends.
inline constexpr std::int32_t use_client = 3;     // adUseClient
inline constexpr std::int32_t open_static = 3;    // adOpenStatic
inline constexpr std::int32_t command_text = 1;   // adCmdText
inline constexpr std::int32_t no_records = 0x80;  // adExecuteNoRecords

}  // namespace tavrix::windows
