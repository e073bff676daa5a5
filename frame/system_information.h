#pragma once

#include "ports/code_page.h"
#include "ports/files.h"
#include "ports/registry.h"
#include "ports/shell.h"

namespace tavrix::frame {

/// What finding and starting the system's own information tool takes.
struct SystemInformationPorts {
    ports::Registry& registry;
    const ports::CodePage& code_page;
    ports::Files& files;
    ports::Shell& shell;
};

/// Starts the system information tool with a normal window, or tells the user that there is none.
/// Never throws.
void show_system_information(const SystemInformationPorts& ports) noexcept;

}  // namespace tavrix::frame
