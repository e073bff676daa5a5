#include "barcode/surface/font_installer.h"

#include "barcode/surface/host_arithmetic.h"

namespace tavrix::barcode {
namespace {

using base::Text;
using base::TextView;

// False also when the surface cannot say.
bool select_font(ports::Surface& surface, TextView family) {
    bool selected = false;
    attempt([&] { surface.set_font_name(family); });
    attempt([&] { selected = base::equal_case_blind(surface.font_name(), family); });
    return selected;
}

}  // namespace

bool FontInstaller::select(ports::Surface& surface, TextView family, TextView file, bool silent,
                           const HostFolders& folders) {
    if (select_font(surface, family)) return true;
    install(Text(file) + u".ttf", folders);
    if (select_font(surface, family)) return true;
    // A host's True is -1.
    const std::int32_t help = silent ? -1 : 0;
    attempt([&] {
        shell_.show_message(
            u"Proszę zainstalować czcionkę " + Text(family) + u"(" + Text(file) + u")", help);
    });
    return false;
}

// Each step is tried, whatever became of the one before.
void FontInstaller::install(const Text& file, const HostFolders& folders) {
    const Text fonts_folder = folders.windows + u"\\Fonts";
    const Text installed = fonts_folder + u"\\" + file;
    const Text supplied = folders.program + u"\\" + file;
    if (!files_.is_file(installed) && files_.is_file(supplied)) {
        attempt([&] { files_.copy(supplied, installed); });
    }
    if (!files_.is_file(installed)) return;
    attempt([&] { shell_.invoke_verb(fonts_folder, file, u"Install"); });
    const bool is_32_bit_program_on_64_bit_windows = folders.program.find(u"(x86)") != Text::npos;
    // Quoted, or another program could stand at the path's first space.
    Text registrar = u"\"";
    registrar += folders.program;
    registrar += is_32_bit_program_on_64_bit_windows ? u"\\FontReg64.exe\"" : u"\\FontReg32.exe\"";
    attempt([&] { shell_.run_and_wait(registrar, true); });
}

}  // namespace tavrix::barcode
