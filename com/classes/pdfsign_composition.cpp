#include "com/classes/compose.h"
#include "com/classes/compositions.h"
#include "ports/portable/openssl_signing.h"
#include "ports/windows/adapters.h"

namespace tavrix::com {
namespace {

struct ComposedPdfPodpis {
    std::unique_ptr<ports::DataFiles> files = ports::make_windows_files();
    std::unique_ptr<ports::Clock> clock = ports::make_windows_clock();
    std::unique_ptr<ports::CodePage> code_page = ports::make_windows_code_page();
    std::unique_ptr<ports::Signing> signing = ports::make_openssl_signing();
    pdfsign::ClsPdfPodpis object{{*files, *clock, *code_page, *signing}};
};

}  // namespace

std::shared_ptr<pdfsign::ClsPdfPodpis> compose_cls_pdf_podpis() {
    return compose<ComposedPdfPodpis>();
}

}  // namespace tavrix::com
