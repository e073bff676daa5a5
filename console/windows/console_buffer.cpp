#include "console/windows/console_buffer.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>

#include "console/windows/utf8.h"

namespace tavrix::console {
namespace {

// Older consoles take no more than 64 KiB in one call.
constexpr std::size_t most_at_once = 8'000;

// How many bytes at the end begin a character that is not whole yet.
std::size_t unfinished_bytes(const std::string& utf8) {
    std::size_t trail = 0;
    while (trail < 3 && trail < utf8.size() && (utf8[utf8.size() - 1 - trail] & 0xC0) == 0x80)
        ++trail;
    if (trail == utf8.size()) return 0;
    const unsigned char lead = static_cast<unsigned char>(utf8[utf8.size() - 1 - trail]);
    const std::size_t follow = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
    return follow > trail ? trail + 1 : 0;
}

}  // namespace

ConsoleBuffer::ConsoleBuffer(std::ostream& stream, unsigned long standard, int descriptor)
    : stream_(stream), console_(GetStdHandle(standard)) {
    DWORD mode = 0;
    if (GetConsoleMode(console_, &mode)) {
        usual_ = stream.rdbuf(this);
    } else {
        _setmode(descriptor, _O_BINARY);
    }
}

ConsoleBuffer::~ConsoleBuffer() {
    stream_.flush();
    if (usual_ != nullptr) stream_.rdbuf(usual_);
}

ConsoleBuffer::int_type ConsoleBuffer::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    const char single = traits_type::to_char_type(c);
    return xsputn(&single, 1) == 1 ? c : traits_type::eof();
}

std::streamsize ConsoleBuffer::xsputn(const char* text, std::streamsize count) {
    pending_.append(text, static_cast<std::size_t>(count));
    return pending_.size() > most_at_once && sync() != 0 ? 0 : count;
}

int ConsoleBuffer::sync() {
    const std::size_t kept = unfinished_bytes(pending_);
    const std::wstring text = wide_of({pending_.data(), pending_.size() - kept});
    pending_.erase(0, pending_.size() - kept);
    for (std::size_t at = 0; at < text.size();) {
        const auto piece = static_cast<DWORD>(std::min(text.size() - at, most_at_once));
        DWORD written = 0;
        if (!WriteConsoleW(console_, text.data() + at, piece, &written, nullptr) || written == 0)
            return -1;
        at += written;
    }
    return 0;
}

}  // namespace tavrix::console
