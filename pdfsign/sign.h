#pragma once

#include "pdfsign/open_document.h"
#include "pdfsign/sign_ports.h"

namespace tavrix::pdfsign {

enum class Profile {
    usual,  ///< `adbe.pkcs7.detached`, with the time among what is signed
    pades   ///< `ETSI.CAdES.detached`, the baseline profile of ETSI EN 319 142-1
};

/// The certificate and key of a PFX file. The password is tried as UTF-8 and in the system's code
/// page, because programs differ.
std::unique_ptr<ports::Signer> load_signer(const PdfPorts& ports, base::TextView path,
                                           base::TextView password);

/// A document that is about to be signed. Every function throws std::exception when it fails.
class PdfToSign {
  public:
    PdfToSign(const PdfPorts& ports, base::TextView path);
    /// Writes the signed document whole or not at all; `out` may be the document itself, which is
    /// closed before. Who may read the document may read it signed. Once.
    void sign(ports::Signer& signer, base::TextView out, Profile profile);

  private:
    void sign_repaired(ports::Signer& signer, base::TextView out, Profile profile);

    PdfPorts ports_;
    base::Text path_;
    OpenDocument document_;
    bool damaged_ = false;
};

}  // namespace tavrix::pdfsign
