#pragma once

#include <ostream>
#include <streambuf>
#include <string>

namespace tavrix::console {

/// While one of these stands, what is written to `stream` in UTF-8 stands in the console as it is
/// meant, whatever code page the console has. A stream that goes to a file or a program keeps its
/// bytes, line ends included.
class ConsoleBuffer final : public std::streambuf {
  public:
    /// \param standard STD_OUTPUT_HANDLE or STD_ERROR_HANDLE. \param descriptor of the same.
    ConsoleBuffer(std::ostream& stream, unsigned long standard, int descriptor);
    ~ConsoleBuffer() override;

  protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int sync() override;

  private:
    std::ostream& stream_;
    void* console_;
    /// Null where the stream does not go to a console.
    std::streambuf* usual_ = nullptr;
    std::string pending_;
};

}  // namespace tavrix::console
