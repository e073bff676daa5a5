#include "tests/support/freed_memory.h"

#include <malloc.h>
#include <string.h>

#include <cstdlib>
#include <new>
#include <string>
#include <vector>

namespace {

// Outlives the objects that the program gives back at its end.
std::vector<std::string>& texts = *new std::vector<std::string>;
int blocks_found = 0;
bool watching = false;

}  // namespace

void* operator new(std::size_t size) {
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) throw std::bad_alloc();
    // What an earlier owner left there is not this one's.
    memset(block, 0, malloc_usable_size(block));
    return block;
}

// The library's sorts ask this way. Every way of asking and giving back stands here: a sanitizer's
// own beside one of these would be taken for a mismatch.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* block) noexcept {
    if (watching && block != nullptr) {
        const std::size_t size = malloc_usable_size(block);
        for (const std::string& text : texts) {
            if (memmem(block, size, text.data(), text.size()) != nullptr) ++blocks_found;
        }
    }
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept {
    operator delete(block);
}

namespace tavrix::test {

void look_for_in_freed_memory(std::string_view secret) {
    // The watch's own texts are no finds.
    watching = false;
    texts.emplace_back(secret);
    std::string& utf16 = texts.emplace_back();
    for (const char c : secret) (utf16 += c) += '\0';
    // Without the zero behind the last character.
    utf16.pop_back();
    watching = true;
}

int found_in_freed_memory() {
    return blocks_found;
}

void forget_freed_memory() {
    watching = false;
    texts.clear();
    blocks_found = 0;
}

}  // namespace tavrix::test
