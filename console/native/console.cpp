#include "console/console.h"

#include <unistd.h>

#include <cstdlib>

namespace tavrix::console {

/// This system's programs speak UTF-8.
struct Console::Implementation {
    int count;
    char** arguments;
};

Console::Console(int count, char** arguments)
    : implementation_(std::make_unique<Implementation>(Implementation{count, arguments})) {}

Console::~Console() = default;

int Console::count() const noexcept {
    return implementation_->count;
}

char** Console::arguments() const noexcept {
    return implementation_->arguments;
}

bool is_error_output_watched() {
    return isatty(STDERR_FILENO) != 0;
}

const char* variable(const char* name) {
    return std::getenv(name);
}

}  // namespace tavrix::console
