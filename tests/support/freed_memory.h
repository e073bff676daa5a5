#pragma once

#include <string_view>

namespace tavrix::test {

// Every block of memory that the program gives back to `operator delete` is looked into, for texts
// that must not be left there. What libraries written in C hold is not seen.

/// From now on; as UTF-8 and as UTF-16. ASCII only.
void look_for_in_freed_memory(std::string_view secret);
/// How many blocks held one of the texts.
int found_in_freed_memory();
/// Ends the watch.
void forget_freed_memory();

}  // namespace tavrix::test
