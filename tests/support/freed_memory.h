#pragma once

#include <string_view>

namespace tavrix::test {

/// Looks into every block of memory that the program gives back to `operator delete` while this
/// object lives, for texts that must not be left there. What libraries written in C hold is not
/// seen. One at a time.
class FreedMemory {
  public:
    FreedMemory();
    ~FreedMemory();
    FreedMemory(const FreedMemory&) = delete;
    FreedMemory& operator=(const FreedMemory&) = delete;

    /// From now on; as UTF-8 and as UTF-16. ASCII only.
    void look_for(std::string_view secret);
    /// How many blocks held one of the texts.
    int found() const;
};

}  // namespace tavrix::test
