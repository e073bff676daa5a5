// The operations of the interface. Each carries out one request that the dispatcher has let
// through, and throws a Refusal for what it does not accept.
#pragma once

#include "sandbox/service/service.h"

namespace tavrix::sandbox {

using Operation = Answer(Service& service, Request& request);

// Signing in with a KSeF token: authentication.cpp
Operation make_challenge;
Operation public_key_certificates;
Operation authenticate_with_token;
Operation authentication_status;
Operation redeem_tokens;
Operation refresh_access_token;
Operation list_authentications;
Operation revoke_current_authentication;
Operation revoke_authentication;

// Interactive sessions, and asking about all of them: sessions.cpp
Operation open_online_session;
Operation close_online_session;
Operation session_status;
Operation list_sessions;

// Batch sessions: batch_sessions.cpp
Operation open_batch_session;
Operation upload_part;
Operation close_batch_session;

// Invoices of a session, their confirmations, and fetching by KSeF number: invoices.cpp
Operation send_invoice;
Operation list_session_invoices;
Operation list_failed_invoices;
Operation invoice_status;
Operation invoice_upo;
Operation invoice_upo_by_ksef_number;
Operation session_upo;
Operation invoice_by_ksef_number;

// Searching invoices by their metadata: metadata.cpp
Operation query_metadata;

// What a client may ask about its limits: limits.cpp
Operation rate_limits;
Operation context_limits;
Operation subject_limits;

// KSeF tokens: tokens.cpp
Operation create_token;
Operation list_tokens;
Operation token_status;
Operation revoke_token;

// KSeF certificates: certificates.cpp
Operation query_certificates;

// Confirmations by signed address, without a bearer token: download_links.cpp
Operation download_invoice_upo;
Operation download_session_upo;

}  // namespace tavrix::sandbox
