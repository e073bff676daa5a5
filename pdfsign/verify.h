#pragma once

#include <vector>

#include "ports/files.h"
#include "ports/signing.h"

namespace tavrix::pdfsign {

struct VerifiedSignature {
    base::Text field;
    /// As the document writes it, "D:20261122140501+01'00'".
    base::Text time;
    /// Empty when the signature could be judged.
    base::Text fault;
    ports::SignatureFindings findings;
    /// How many bytes came behind what was signed: 0 for the whole document, more when it was
    /// changed since, be it by a further signature.
    std::uint64_t added_bytes = 0;
};

/// Judges every signature in a document, in the order of its form. Throws std::exception for a
/// document that cannot be read. `trusted` are certificates in PEM.
std::vector<VerifiedSignature> verify_pdf(ports::FileReader& file, ports::Signing& signing,
                                          std::string_view trusted);

}  // namespace tavrix::pdfsign
