#include "ports/windows/adapters.h"
#include "tests/support/code_page.h"

namespace tavrix::test {

std::unique_ptr<ports::CodePage> system_code_page() {
    return ports::make_windows_code_page();
}

}  // namespace tavrix::test
