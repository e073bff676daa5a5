#pragma once

namespace tavrix::base {

/// The library's version: major, minor, revision.
inline constexpr int version_major = 10;
inline constexpr int version_minor = 0;
inline constexpr int version_revision = 36;
inline constexpr char16_t product_title[] = u"Tavrix";

}  // namespace tavrix::base
