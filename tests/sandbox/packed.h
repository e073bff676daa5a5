// Archives as clients make them, and as nobody should.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace tavrix::sandbox::testing {

/// Names and contents.
using Files = std::vector<std::pair<std::string, std::string>>;

enum class Packing { zip, encrypted_zip, tar_gz };

std::string packed(const Files& files, Packing packing = Packing::zip);

}  // namespace tavrix::sandbox::testing
