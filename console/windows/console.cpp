#include "console/console.h"

#include <windows.h>
// Needs what it includes.
#include <shellapi.h>

#include <cstdio>
#include <iostream>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "console/windows/console_buffer.h"
#include "console/windows/utf8.h"

namespace tavrix::console {
namespace {

// Not as the compiler's start-up code gives them, which is in the system's code page.
std::vector<std::string> given_arguments() {
    int count = 0;
    wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 0; i < count; ++i) arguments.push_back(utf8_of(wide[i]));
    LocalFree(wide);
    return arguments;
}

}  // namespace

struct Console::Implementation {
    std::vector<std::string> texts = given_arguments();
    std::vector<char*> pointers;
    ConsoleBuffer output{std::cout, STD_OUTPUT_HANDLE, _fileno(stdout)};
    ConsoleBuffer errors{std::cerr, STD_ERROR_HANDLE, _fileno(stderr)};
};

Console::Console(int, char**) : implementation_(std::make_unique<Implementation>()) {
    for (std::string& text : implementation_->texts)
        implementation_->pointers.push_back(text.data());
    implementation_->pointers.push_back(nullptr);
}

Console::~Console() = default;

int Console::count() const noexcept {
    return static_cast<int>(implementation_->texts.size());
}

char** Console::arguments() const noexcept {
    return implementation_->pointers.data();
}

bool is_error_output_watched() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
}

// Asked of the system: the compiler's library has the narrow environment only, in the system's code
// page.
const char* variable(const char* name) {
    static std::mutex one_at_a_time;
    static std::map<std::string, std::string> known;
    const std::lock_guard lock(one_at_a_time);
    const std::wstring wide_name = wide_of(name);
    const DWORD size = GetEnvironmentVariableW(wide_name.c_str(), nullptr, 0);
    if (size == 0) return nullptr;
    std::wstring value(size, L'\0');
    value.resize(GetEnvironmentVariableW(wide_name.c_str(), value.data(), size));
    return known.try_emplace(name, utf8_of(value)).first->second.c_str();
}

}  // namespace tavrix::console
