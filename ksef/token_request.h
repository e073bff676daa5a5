#pragma once

#include "ksef/client.h"

namespace tavrix::ksef {

/// What a new KSeF token may do, and what its owner calls it (5 to 256 characters).
struct TokenRequest {
    Body permissions;
    base::Text description;
};

struct IssuedToken {
    bool issued = false;
    base::SecretText token_or_failure;
    std::string reference;
};

/// Asks for a KSeF token with the client's access token. The failure is the reply's body, or
/// "/tokens:STATUS:" and the HTTP status.
IssuedToken request_token(Client& client, const TokenRequest& request);

/// Waits until a token is good for an authentication, one minute at most, which takes the service
/// longer than to name it. Gives its last status: "Active" where it is; "" where none was read.
std::string wait_until_active(Client& client, ports::Clock& clock, const std::string& reference);

}  // namespace tavrix::ksef
