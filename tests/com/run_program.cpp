#include "tests/com/run_program.h"

#include <gtest/gtest.h>

#include "windows/automation.h"

namespace tavrix::test {

std::string run_program(base::Text command) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    EXPECT_TRUE(CreatePipe(&reader, &writer, &inherited, 0));
    SetHandleInformation(reader, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writer;
    startup.hStdError = writer;
    PROCESS_INFORMATION process{};
    const BOOL started =
        CreateProcessW(nullptr, reinterpret_cast<wchar_t*>(command.data()), nullptr, nullptr, TRUE,
                       0, nullptr, nullptr, &startup, &process);
    CloseHandle(writer);
    EXPECT_TRUE(started);
    std::string output;
    char buffer[4096];
    DWORD read = 0;
    while (ReadFile(reader, buffer, sizeof buffer, &read, nullptr) && read > 0)
        output.append(buffer, read);
    CloseHandle(reader);
    if (started) {
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    return output;
}

}  // namespace tavrix::test
