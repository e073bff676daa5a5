#include "com/classes/compose.h"
#include "com/classes/compositions.h"
#include "ports/windows/adapters.h"

namespace tavrix::com {
namespace {

struct ComposedDispatcher {
    std::unique_ptr<ports::Shell> shell = ports::make_windows_shell();
    std::unique_ptr<ports::Files> files = ports::make_windows_files();
    std::unique_ptr<ports::Pictures> pictures = ports::make_windows_pictures();
    std::unique_ptr<ports::CodePage> code_page = ports::make_windows_code_page();
    barcode::Drk_Wyd_Ean_cls object{{*shell, *files, *pictures, *code_page}};
};

}  // namespace

std::shared_ptr<barcode::Drk_Wyd_Ean_cls> compose_ean_cls() {
    return compose<ComposedDispatcher>();
}

std::shared_ptr<barcode::Drk_Wyd_Ean_cls128> compose_ean_cls128() {
    return std::make_shared<barcode::Drk_Wyd_Ean_cls128>(*ports::make_windows_code_page());
}

}  // namespace tavrix::com
