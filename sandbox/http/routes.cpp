#include "sandbox/http/routes.h"

#include <algorithm>

namespace tavrix::sandbox {
namespace {

using G = RateGroup;
using N = Need;

// Source: `x-required-permissions` of the contract's operations.
constexpr std::string_view sending[] = {"InvoiceWrite", "PefInvoiceWrite", "EnforcementOperations"};
constexpr std::string_view following[] = {"InvoiceWrite", "Introspection", "PefInvoiceWrite",
                                          "EnforcementOperations"};
constexpr std::string_view listing[] = {"Introspection", "EnforcementOperations", "InvoiceWrite"};
constexpr std::string_view reading[] = {"InvoiceRead"};
constexpr std::span<const std::string_view> anybody;

// A fixed segment stands before a parameter in the same place.
constexpr Route table[] = {
    {"POST", "auth/challenge", "auth/challenge", G::authentication, N::nothing, anybody,
     make_challenge},
    {"GET", "security/public-key-certificates", "security/public-key-certificates",
     G::authentication, N::nothing, anybody, public_key_certificates},
    {"POST", "auth/ksef-token", "auth/ksef-token", G::authentication, N::nothing, anybody,
     authenticate_with_token},
    {"POST", "auth/token/redeem", "auth/token/redeem", G::authentication, N::authentication_token,
     anybody, redeem_tokens},
    {"POST", "auth/token/refresh", "auth/token/refresh", G::authentication, N::refresh_token,
     anybody, refresh_access_token},
    {"GET", "auth/sessions", "auth/sessions", G::other, N::access_token, anybody,
     list_authentications},
    {"DELETE", "auth/sessions/current", "auth/sessions/revoke-current", G::other,
     N::access_or_refresh_token, anybody, revoke_current_authentication},
    {"DELETE", "auth/sessions/{}", "auth/sessions/revoke", G::other, N::access_token, anybody,
     revoke_authentication},
    {"GET", "auth/{}", "auth/status", G::authentication, N::authentication_token, anybody,
     authentication_status},

    {"POST", "sessions/online", "sessions/online", G::online_session, N::access_token, sending,
     open_online_session},
    {"POST", "sessions/online/{}/invoices", "sessions/online/invoices", G::invoice_send,
     N::access_token, sending, send_invoice},
    {"POST", "sessions/online/{}/close", "sessions/online/close", G::online_session,
     N::access_token, sending, close_online_session},
    {"GET", "sessions", "sessions", G::session_list, N::access_token, listing, list_sessions},
    {"GET", "sessions/{}", "sessions/status", G::session_misc, N::access_token, following,
     session_status},
    {"GET", "sessions/{}/invoices", "sessions/invoices", G::session_invoice_list, N::access_token,
     following, list_session_invoices},
    {"GET", "sessions/{}/invoices/failed", "sessions/invoices/failed", G::session_invoice_list,
     N::access_token, following, list_failed_invoices},
    {"GET", "sessions/{}/invoices/{}", "sessions/invoices/status", G::invoice_status,
     N::access_token, following, invoice_status},
    {"GET", "sessions/{}/invoices/ksef/{}/upo", "sessions/invoices/ksef/upo", G::session_misc,
     N::access_token, following, invoice_upo_by_ksef_number},
    {"GET", "sessions/{}/invoices/{}/upo", "sessions/invoices/upo", G::session_misc,
     N::access_token, following, invoice_upo},
    {"GET", "sessions/{}/upo/{}", "sessions/upo", G::session_misc, N::access_token, following,
     session_upo},

    {"GET", "invoices/ksef/{}", "invoices/ksef", G::invoice_download, N::access_token, reading,
     invoice_by_ksef_number},
    {"POST", "invoices/query/metadata", "invoices/query/metadata", G::invoice_metadata,
     N::access_token, reading, query_metadata},

    {"GET", "rate-limits", "rate-limits", G::other, N::access_token, anybody, rate_limits},
    {"GET", "limits/context", "limits/context", G::other, N::access_token, anybody, context_limits},
    {"GET", "limits/subject", "limits/subject", G::other, N::access_token, anybody, subject_limits},

    {"POST", "tokens", "tokens/create", G::other, N::access_token, anybody, create_token},
    {"GET", "tokens", "tokens", G::other, N::access_token, anybody, list_tokens},
    {"GET", "tokens/{}", "tokens/status", G::other, N::access_token, anybody, token_status},
    {"DELETE", "tokens/{}", "tokens/revoke", G::other, N::access_token, anybody, revoke_token},

    // Outside the versioned root, without a bearer token: see storage.h.
    {"GET", "storage/01/{}/invoice-upo/{}", "storage/invoice-upo", G::unlimited, N::nothing,
     anybody, download_invoice_upo},
    {"GET", "storage/01/{}/session-upo/{}", "storage/session-upo", G::unlimited, N::nothing,
     anybody, download_session_upo},
};

constexpr bool steps_differ() {
    for (std::size_t i = 0; i < std::size(table); ++i)
        for (std::size_t k = i + 1; k < std::size(table); ++k)
            if (table[i].step == table[k].step) return false;
    return true;
}
static_assert(steps_differ(), "a fault must be able to name every operation");

constexpr std::string_view behind_the_scenes[] = {"processing/authentication", "processing/invoice",
                                                  "processing/session"};

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
    for (const Route& route : routes) {
        if (!match_path(route.pattern, raw_path, request.parameters)) continue;
        if (route.method == request.method) return &route;
        path_known = true;
    }
    return nullptr;
}

}  // namespace tavrix::sandbox
