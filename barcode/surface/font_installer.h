#pragma once

#include "fonts/barcode_fonts.h"
#include "ports/files.h"
#include "ports/shell.h"
#include "ports/surface.h"

namespace tavrix::barcode {

/// The folders that a host names: its own, where the font files are, and that of Windows.
struct HostFolders {
    const base::Text& program;
    const base::Text& windows;
};

/// Makes sure that a surface has a font.
class FontInstaller {
  public:
    FontInstaller(ports::Shell& shell, ports::Files& files) : shell_(shell), files_(files) {}

    /// Selects the font `family` on the surface, after installing it from the program folder's
    /// `file` (without extension) where it is missing. True when the surface has it; otherwise a
    /// message asks the user for it, whatever `silent` says, which only becomes the message's help
    /// number. Throws nothing.
    bool select(ports::Surface& surface, base::TextView family, base::TextView file, bool silent,
                const HostFolders& folders);
    bool select(ports::Surface& surface, const fonts::BarcodeFont& font,
                const HostFolders& folders) {
        return select(surface, font.family, font.file, true, folders);
    }

  private:
    void install(const base::Text& file, const HostFolders& folders);

    ports::Shell& shell_;
    ports::Files& files_;
};

}  // namespace tavrix::barcode
