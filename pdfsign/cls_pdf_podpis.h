#pragma once

#include "base/secret.h"
#include "pdfsign/sign_ports.h"

namespace tavrix::pdfsign {

/// The public class `ClsPdfPodpis`: signatures in PDF files. No method raises.
class ClsPdfPodpis {
  public:
    explicit ClsPdfPodpis(const PdfPorts& ports) : ports_(ports) {}

    /// Signs the file `Plik` with the certificate of the PFX file `cenrtPFX`, whose password is
    /// `pin`, into `plikpodpisany`; True when that was written. A box in the first page's corner
    /// names the holder and the time. Anything that fails is False and leaves `plikpodpisany` as it
    /// was; an expired certificate signs.
    bool pdfpodpis(const base::Text& Plik, const base::Text& plikpodpisany,
                   const base::Text& cenrtPFX, const base::SecretText& pin) noexcept;

  private:
    PdfPorts ports_;
};

}  // namespace tavrix::pdfsign
