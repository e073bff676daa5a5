#pragma once

#include <memory>

namespace tavrix::console {

/// What a program shares with the system that started it, in UTF-8 whatever the system's own
/// encoding: its arguments, std::cout and std::cerr. One stands for as long as `main` runs.
class Console {
  public:
    Console(int count, char** arguments);
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    int count() const noexcept;
    /// \returns with a null behind the last, as `main` gets them.
    char** arguments() const noexcept;

  private:
    struct Implementation;
    std::unique_ptr<Implementation> implementation_;
};

/// Whether a person reads standard error, and not a file or a program.
bool is_error_output_watched();

/// A variable of the environment, null when it is not set; valid as long as the process.
const char* variable(const char* name);

}  // namespace tavrix::console
