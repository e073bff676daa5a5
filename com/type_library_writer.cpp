// Writes the type library that the DLL then carries: type_library_writer FILE. Runs during the
// build.

#include <cstdio>

#include "base/error.h"
#include "com/type_library.h"

int main(int argument_count, char** arguments) {
    if (argument_count != 2) return 2;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    try {
        tavrix::com::write_type_library(tavrix::com::server(),
                                        tavrix::base::from_utf8(arguments[1]));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "type library: %s\n", error.what());
        return 1;
    }
    return 0;
}
