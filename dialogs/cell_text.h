#pragma once

#include <optional>

#include "ports/database.h"

namespace tavrix::dialogs {

/// A field's value for people to read, "tak" and "nie" and decimal commas; nothing for null, which
/// is not the empty text. Very long ones end with "…".
std::optional<base::Text> cell_text(const ports::Value& value);

/// The same in one line of a grid.
base::Text one_line(base::TextView text);

/// The beginning of a text, at most `most` units (more than 0), no letter cut in two.
base::TextView cut_whole(base::TextView text, std::size_t most);

}  // namespace tavrix::dialogs
