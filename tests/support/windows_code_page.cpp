#include "ports/windows/ansi_code_page.h"
#include "tests/support/code_page.h"

namespace tavrix::test {

std::unique_ptr<ports::CodePage> system_code_page() {
    return std::make_unique<windows::AnsiCodePage>();
}

}  // namespace tavrix::test
