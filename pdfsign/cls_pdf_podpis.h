#pragma once

#include "base/secret.h"

namespace tavrix::pdfsign {

/// The public class `ClsPdfPodpis`: signatures in PDF files. No method raises.
class ClsPdfPodpis {
  public:
    /// Signs the file `Plik` with the certificate of the PFX file `cenrtPFX`, whose password is
    /// `pin`, into `plikpodpisany`; True when that was written. Not built yet: False.
    bool pdfpodpis(const base::Text& Plik, const base::Text& plikpodpisany,
                   const base::Text& cenrtPFX, const base::SecretText& pin) noexcept;
};

}  // namespace tavrix::pdfsign
