#pragma once

#include "windows/automation.h"

namespace tavrix::com {

namespace detail {

consteval unsigned hex_digit(char c) {
    if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
    if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
    throw "a GUID is written in capital hexadecimal digits";
}

consteval unsigned long hex_number(const char* text, int digits) {
    unsigned long number = 0;
    for (int i = 0; i < digits; ++i) number = number * 16 + hex_digit(text[i]);
    return number;
}

}  // namespace detail

/// "01234567-89AB-CDEF-0123-456789ABCDEF", checked when it is compiled.
consteval GUID guid(const char (&text)[37]) {
    if (text[8] != '-' || text[13] != '-' || text[18] != '-' || text[23] != '-') throw "not a GUID";
    GUID id{};
    id.Data1 = detail::hex_number(text, 8);
    id.Data2 = static_cast<unsigned short>(detail::hex_number(text + 9, 4));
    id.Data3 = static_cast<unsigned short>(detail::hex_number(text + 14, 4));
    for (int i = 0; i < 8; ++i) {
        const int at = i < 2 ? 19 + 2 * i : 20 + 2 * i;
        id.Data4[i] = static_cast<unsigned char>(detail::hex_number(text + at, 2));
    }
    return id;
}

}  // namespace tavrix::com
