// Signing in with a KSeF token.
#pragma once

#include "sandbox/service/service.h"

namespace tavrix::sandbox {

Answer make_challenge(Service& service, Request& request);
Answer public_key_certificates(Service& service, Request& request);
Answer authenticate_with_token(Service& service, Request& request);
Answer authentication_status(Service& service, Request& request);
Answer redeem_tokens(Service& service, Request& request);
Answer refresh_access_token(Service& service, Request& request);
Answer list_authentications(Service& service, Request& request);
Answer revoke_current_authentication(Service& service, Request& request);
Answer revoke_authentication(Service& service, Request& request);

}  // namespace tavrix::sandbox
