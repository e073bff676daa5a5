#pragma once

#include <filesystem>

#include "windows/automation.h"

namespace tavrix::dialogs_program {

/// Writes a bitmap file of the window as it stands on the screen, with its frame and title.
void save_picture(HWND window, const std::filesystem::path& path);

}  // namespace tavrix::dialogs_program
