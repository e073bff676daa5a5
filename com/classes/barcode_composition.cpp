#include "com/classes/barcode_composition.h"

#include "com/classes/compose.h"
#include "ports/windows/ansi_code_page.h"
#include "ports/windows/com_pictures.h"
#include "ports/windows/desktop_shell.h"
#include "ports/windows/windows_files.h"

namespace tavrix::com {
namespace {

struct ComposedDispatcher {
    windows::DesktopShell shell;
    windows::WindowsFiles files;
    windows::ComPictures pictures;
    windows::AnsiCodePage code_page;
    barcode::Drk_Wyd_Ean_cls object{{shell, files, pictures, code_page}};
};

}  // namespace

std::shared_ptr<barcode::Drk_Wyd_Ean_cls> compose_ean_cls() {
    return compose<ComposedDispatcher>();
}

std::shared_ptr<barcode::Drk_Wyd_Ean_cls128> compose_ean_cls128() {
    return std::make_shared<barcode::Drk_Wyd_Ean_cls128>(windows::AnsiCodePage());
}

}  // namespace tavrix::com
