#pragma once

#include <map>
#include <set>

#include "base/text.h"

namespace tavrix::mail {

/// The longest name of one file that every file system takes, in UTF-16 units and in bytes of UTF-8
/// alike.
inline constexpr std::size_t longest_file_name = 255;

/// A name that a stranger gave to a file, as the name of one file on Windows and elsewhere, inside
/// the folder that it is put in. Ordinary names, Polish ones included, stay as they are. Made into
/// "_": separators, colon, what Windows forbids, control and direction characters, halves of
/// characters, names made of dots alone. Blanks and dots at the end go, as Windows would have them;
/// the name of a device (CON, also with an extension) gets a "_" in front. What is longer than
/// `longest` is cut before its extension. Never empty.
base::Text harmless_file_name(base::TextView name, std::size_t longest = longest_file_name);

/// How long a name in `folder` may be so that hosts which know paths of 259 characters and no
/// longer ones can open the file.
std::size_t longest_name_in(base::TextView folder) noexcept;

/// The names of one message's files: an equal one gets a number, " (2)", before its extension.
/// Equal as on Windows, whose names differ in more than letter case.
class DistinctNames {
  public:
    explicit DistinctNames(std::size_t longest) : longest_(longest) {}

    /// `name`, which is harmless, or the first free one with a number.
    base::Text take(const base::Text& name);

  private:
    std::size_t longest_;
    std::set<base::Text> taken_;
    std::map<base::Text, int> last_number_;
};

}  // namespace tavrix::mail
