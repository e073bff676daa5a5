#include "sandbox/http/routes.h"

#include <algorithm>

#include "sandbox/basics/text.h"

namespace tavrix::sandbox {
namespace {

using G = RateGroup;

// Source: `x-required-permissions` of the contract's operations.
constexpr std::string_view sending_permissions[] = {"InvoiceWrite", "PefInvoiceWrite",
                                                    "EnforcementOperations"};
constexpr std::string_view package_permissions[] = {"InvoiceWrite", "EnforcementOperations"};
constexpr std::string_view following_permissions[] = {"InvoiceWrite", "Introspection",
                                                      "PefInvoiceWrite", "EnforcementOperations"};
constexpr std::string_view listing_permissions[] = {"Introspection", "EnforcementOperations",
                                                    "InvoiceWrite"};
constexpr std::string_view reading_permissions[] = {"InvoiceRead"};

constexpr Access anybody{Need::nothing, {}};
constexpr Access signing_in{Need::authentication_token, {}};
constexpr Access refreshing{Need::refresh_token, {}};
constexpr Access leaving{Need::access_or_refresh_token, {}};
constexpr Access signed_in{Need::access_token, {}};
constexpr Access sending{Need::access_token, sending_permissions};
constexpr Access sending_packages{Need::access_token, package_permissions};
constexpr Access following{Need::access_token, following_permissions};
constexpr Access listing{Need::access_token, listing_permissions};
constexpr Access reading{Need::access_token, reading_permissions};

// A fixed segment stands before a parameter in the same place.
constexpr Route table[] = {
    {"POST", "auth/challenge", "auth/challenge", G::authentication, anybody, make_challenge},
    {"GET", "security/public-key-certificates", "security/public-key-certificates",
     G::authentication, anybody, public_key_certificates},
    {"POST", "auth/ksef-token", "auth/ksef-token", G::authentication, anybody,
     authenticate_with_token},
    {"POST", "auth/token/redeem", "auth/token/redeem", G::authentication, signing_in,
     redeem_tokens},
    {"POST", "auth/token/refresh", "auth/token/refresh", G::authentication, refreshing,
     refresh_access_token},
    {"GET", "auth/sessions", "auth/sessions", G::other, signed_in, list_authentications},
    {"DELETE", "auth/sessions/current", "auth/sessions/revoke-current", G::other, leaving,
     revoke_current_authentication},
    {"DELETE", "auth/sessions/{}", "auth/sessions/revoke", G::other, signed_in,
     revoke_authentication},
    {"GET", "auth/{}", "auth/status", G::authentication, signing_in, authentication_status},

    {"POST", "sessions/online", "sessions/online", G::online_session, sending, open_online_session},
    {"POST", "sessions/online/{}/invoices", "sessions/online/invoices", G::invoice_send, sending,
     send_invoice},
    {"POST", "sessions/online/{}/close", "sessions/online/close", G::online_session, sending,
     close_online_session},
    {"POST", "sessions/batch", "sessions/batch", G::batch_session, sending_packages,
     open_batch_session},
    {"POST", "sessions/batch/{}/close", "sessions/batch/close", G::batch_session, sending_packages,
     close_batch_session},
    {"GET", "sessions", "sessions", G::session_list, listing, list_sessions},
    {"GET", "sessions/{}", "sessions/status", G::session_misc, following, session_status},
    {"GET", "sessions/{}/invoices", "sessions/invoices", G::session_invoice_list, following,
     list_session_invoices},
    {"GET", "sessions/{}/invoices/failed", "sessions/invoices/failed", G::session_invoice_list,
     following, list_failed_invoices},
    {"GET", "sessions/{}/invoices/{}", "sessions/invoices/status", G::invoice_status, following,
     invoice_status},
    {"GET", "sessions/{}/invoices/ksef/{}/upo", "sessions/invoices/ksef/upo", G::session_misc,
     following, invoice_upo_by_ksef_number},
    {"GET", "sessions/{}/invoices/{}/upo", "sessions/invoices/upo", G::session_misc, following,
     invoice_upo},
    {"GET", "sessions/{}/upo/{}", "sessions/upo", G::session_misc, following, session_upo},

    {"GET", "invoices/ksef/{}", "invoices/ksef", G::invoice_download, reading,
     invoice_by_ksef_number},
    {"POST", "invoices/query/metadata", "invoices/query/metadata", G::invoice_metadata, reading,
     query_metadata},

    {"GET", "rate-limits", "rate-limits", G::other, signed_in, rate_limits},
    {"GET", "limits/context", "limits/context", G::other, signed_in, context_limits},
    {"GET", "limits/subject", "limits/subject", G::other, signed_in, subject_limits},

    {"POST", "tokens", "tokens/create", G::other, signed_in, create_token},
    {"GET", "tokens", "tokens", G::other, signed_in, list_tokens},
    {"GET", "tokens/{}", "tokens/status", G::other, signed_in, token_status},
    {"DELETE", "tokens/{}", "tokens/revoke", G::other, signed_in, revoke_token},

    {"POST", "certificates/query", "certificates/query", G::other, signed_in, query_certificates},

    // Outside the versioned root, without a bearer token: see download_links.h.
    {"PUT", "storage/00/{}/batch-parts/{}", "storage/batch-parts", G::unlimited, anybody,
     upload_part},
    {"GET", "storage/01/{}/invoice-upo/{}", "storage/invoice-upo", G::unlimited, anybody,
     download_invoice_upo},
    {"GET", "storage/01/{}/session-upo/{}", "storage/session-upo", G::unlimited, anybody,
     download_session_upo},
};

constexpr bool steps_differ() {
    for (std::size_t i = 0; i < std::size(table); ++i)
        for (std::size_t k = i + 1; k < std::size(table); ++k)
            if (table[i].step == table[k].step) return false;
    return true;
}
static_assert(steps_differ(), "a fault must be able to name every operation");

// Published, not there yet, and of the form of a path that is.
constexpr std::string_view absent[] = {"auth/xades-signature"};

constexpr std::string_view behind_the_scenes[] = {"processing/authentication", "processing/invoice",
                                                  "processing/package", "processing/session"};

}  // namespace

std::span<const Route> interface_routes() {
    return table;
}

std::span<const std::string_view> processing_steps() {
    return behind_the_scenes;
}

bool is_step(std::string_view name) {
    const auto steps = processing_steps();
    return name == "*" || std::find(steps.begin(), steps.end(), name) != steps.end() ||
           std::any_of(std::begin(table), std::end(table),
                       [name](const Route& route) { return route.step == name; });
}

const Route* find_route(std::span<const Route> routes, Request& request, std::string_view raw_path,
                        bool& path_known) {
    path_known = false;
    if (contains(absent, raw_path)) return nullptr;
    for (const Route& route : routes) {
        if (!match_path(route.pattern, raw_path, request.parameters)) continue;
        if (route.method == request.method) return &route;
        path_known = true;
    }
    return nullptr;
}

}  // namespace tavrix::sandbox
