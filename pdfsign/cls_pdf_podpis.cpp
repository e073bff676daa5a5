#include "pdfsign/cls_pdf_podpis.h"

namespace tavrix::pdfsign {

bool ClsPdfPodpis::pdfpodpis(const base::Text& /*Plik*/, const base::Text& /*plikpodpisany*/,
                             const base::Text& /*cenrtPFX*/,
                             const base::SecretText& /*pin*/) noexcept {
    return false;
}

}  // namespace tavrix::pdfsign
