#include "tests/com/run_program.h"

#include <gtest/gtest.h>

#include "windows/handles.h"

namespace tavrix::test {

std::string run_program(base::Text command) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    windows::KernelHandle reader;
    windows::KernelHandle writer;
    EXPECT_TRUE(CreatePipe(reader.out(), writer.out(), &inherited, 0));
    SetHandleInformation(reader.get(), HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writer.get();
    startup.hStdError = writer.get();
    PROCESS_INFORMATION process{};
    const BOOL started =
        CreateProcessW(nullptr, reinterpret_cast<wchar_t*>(command.data()), nullptr, nullptr, TRUE,
                       0, nullptr, nullptr, &startup, &process);
    EXPECT_TRUE(started);
    const windows::KernelHandle running(process.hProcess);
    const windows::KernelHandle thread(process.hThread);
    writer.reset();
    std::string output;
    char buffer[4096];
    DWORD read = 0;
    while (ReadFile(reader.get(), buffer, sizeof buffer, &read, nullptr) && read > 0)
        output.append(buffer, read);
    return output;
}

}  // namespace tavrix::test
