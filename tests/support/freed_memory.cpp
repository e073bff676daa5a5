#include "tests/support/freed_memory.h"

#include <malloc.h>
#include <string.h>

#include <cstdlib>
#include <new>
#include <stdexcept>

namespace {

struct Text {
    char bytes[4096];
    std::size_t size;
};

// Nothing here may allocate.
Text texts[20];
std::size_t text_count = 0;
int blocks_found = 0;
bool watching = false;

void remember(std::string_view secret, std::size_t unit) {
    if (text_count == std::size(texts) || secret.size() * unit > sizeof texts[0].bytes) {
        throw std::length_error("too much to look for");
    }
    Text& text = texts[text_count++];
    text = {};
    for (const char c : secret) {
        text.bytes[text.size] = c;
        text.size += unit;
    }
}

void look_into(void* block) {
    const std::size_t size = malloc_usable_size(block);
    for (std::size_t i = 0; i < text_count; ++i) {
        // Without the zero behind the last character's UTF-16.
        if (memmem(block, size, texts[i].bytes, texts[i].size - (texts[i].bytes[1] == '\0'))) {
            ++blocks_found;
        }
    }
}

}  // namespace

void* operator new(std::size_t size) {
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) throw std::bad_alloc();
    // What an earlier owner left there is not this one's.
    memset(block, 0, malloc_usable_size(block));
    return block;
}

void operator delete(void* block) noexcept {
    if (watching && block != nullptr) look_into(block);
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    operator delete(block);
}

namespace tavrix::test {

FreedMemory::FreedMemory() {
    text_count = 0;
    blocks_found = 0;
    watching = true;
}

FreedMemory::~FreedMemory() {
    watching = false;
}

void FreedMemory::look_for(std::string_view secret) {
    remember(secret, sizeof(char));
    remember(secret, sizeof(char16_t));
}

int FreedMemory::found() const {
    return blocks_found;
}

}  // namespace tavrix::test
