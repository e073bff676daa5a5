#include "tests/com/run_program.h"

#include <cstdio>

#include "windows/bstr.h"

namespace tavrix::test {

std::string run_program(const base::Text& command) {
    std::string output;
    FILE* pipe = _wpopen(windows::wide(command), L"rb");
    char buffer[4096];
    while (const std::size_t read = std::fread(buffer, 1, sizeof buffer, pipe)) {
        output.append(buffer, read);
    }
    _pclose(pipe);
    return output;
}

}  // namespace tavrix::test
