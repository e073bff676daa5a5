#include "pdfsign/cls_pdf_podpis.h"

#include "pdfsign/sign.h"

namespace tavrix::pdfsign {

bool ClsPdfPodpis::pdfpodpis(const base::Text& Plik, const base::Text& plikpodpisany,
                             const base::Text& cenrtPFX, const base::SecretText& pin) noexcept {
    // libqpdf throws from anywhere, and of several kinds.
    try {
        PdfToSign document(ports_, Plik);
        const auto signer = load_signer(ports_, cenrtPFX, pin.view());
        if (!signer->can_sign()) return false;
        document.sign(*signer, plikpodpisany, Profile::usual);
        return true;
    } catch (...) {
        return false;
    }
}

}  // namespace tavrix::pdfsign
