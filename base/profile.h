#pragma once

namespace tavrix::base {

/// For whom an installation behaves: `classic` does everything as the hosts have always seen it,
/// `current` what today's services need for that. Each room says what it means there.
enum class Profile { classic, current };

}  // namespace tavrix::base
