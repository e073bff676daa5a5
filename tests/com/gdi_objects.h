#pragma once

#include <cstddef>

namespace tavrix::test {

/// How many GDI objects this process holds.
std::size_t count_gdi_objects();

}  // namespace tavrix::test
