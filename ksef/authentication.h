#pragma once

#include "ksef/client.h"

namespace tavrix::ksef {

/// Authenticates a company with a KSeF token: challenge, keys, encrypted token, waiting,
/// redemption. Afterwards the state holds the access token, the key for symmetric keys and the
/// Bearer header.
///
/// Returns the empty text, or the failure's text. Raises nothing: whatever goes wrong outside a
/// step's own checks leaves the text as it stood, "Nieznany błą" from the start.
base::Text authenticate(KsefPorts& ports, Client& client, const base::Text& tax_number,
                        const base::SecretText& token);

}  // namespace tavrix::ksef
