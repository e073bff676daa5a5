#pragma once

// The system's headers for automation, in the one order in which they compile.

// clang-format off
#include <windows.h>
#include <objbase.h>
#include <oleauto.h>
#include <ocidl.h>
#include <olectl.h>
// clang-format on

// The system's macro of this name would rename the public class Rejestr's method.
#undef RegGetValue
