#include "sandbox/service/operations.h"

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/ksef_number.h"
#include "sandbox/basics/text.h"
#include "sandbox/exchange/body.h"
#include "sandbox/service/allowed_ips.h"
#include "sandbox/service/processing.h"
#include "sandbox/service/tokens.h"
#include "sandbox/store/statuses.h"

namespace tavrix::sandbox {
namespace {

using namespace std::chrono_literals;

constexpr auto challenge_lifetime = 10min;
constexpr auto authentication_token_lifetime = 45min;
constexpr std::chrono::days refresh_token_lifetime{7};
constexpr std::size_t most_challenges = 10'000;
constexpr std::size_t challenge_length = 36;

Context read_context(const Json& body) {
    const Json& identifier = required_object(body, "contextIdentifier");
    Context context{required_text(identifier, "type"), required_text(identifier, "value")};
    if (context.type != "Nip" && context.type != "InternalId")
        throw invalid_input("Nieobsługiwany typ kontekstu: " + context.type + ".");
    if (context.type == "Nip" ? !is_nip(context.value) : !is_internal_id(context.value))
        throw invalid_input("Nieprawidłowy identyfikator kontekstu.");
    return context;
}

/// Takes a challenge out of the list: each serves one attempt.
Instant take_challenge(Service& service, const std::string& challenge) {
    const auto taken = service.state.challenges.extract(challenge);
    if (taken.empty()) throw bad_request(ErrorCode::bad_challenge);
    return taken.mapped();
}

/// The outcome of an attempt whose request was well formed.
Status judge_attempt(Service& service, Authentication& attempt, Instant challenge_made,
                     const std::string& encrypted_token, const std::string& key_id) {
    const auto refused = [](const char* why) {
        return make_status(StatusOf::authentication, 450, {why});
    };
    if (service.now() - challenge_made > challenge_lifetime)
        return refused("Nieprawidłowe wyzwanie autoryzacyjne");
    const auto plain = service.keys.decrypt(token_usage, encrypted_token, service.now(), key_id);
    if (!plain) return refused("Nieprawidłowy token");
    const std::size_t bar = plain->rfind('|');
    if (bar == std::string::npos) return refused("Nieprawidłowy token");

    const auto sent_ms = number_of<std::int64_t>(std::string_view(*plain).substr(bar + 1));
    if (sent_ms != unix_ms(challenge_made)) return refused("Nieprawidłowy czas tokena");

    const std::string token = plain->substr(0, bar);
    TokenVerdict verdict = judge_token(service, token, attempt.context);
    if (!verdict.refusal.empty()) return refused(verdict.refusal.c_str());
    attempt.permissions = std::move(verdict.permissions);
    if (has_reference_form(verdict.reference)) attempt.token_reference = verdict.reference;
    attempt.token_hash = sha256_base64(token);
    return make_status(StatusOf::authentication, 200);
}

/// What the status is now, which counts as one time of asking.
Status observe(Service& service, Authentication& authentication) {
    const Pace& pace = service.options.authentication;
    if (!authentication.finished && authentication.polls >= pace.polls &&
        service.now() >= authentication.started + std::chrono::milliseconds(pace.delay_ms)) {
        authentication.finished = true;
        service.save(authentication);
    }
    if (authentication.revoked) return make_status(StatusOf::authentication, 425);
    if (authentication.finished) return authentication.outcome;
    ++authentication.polls;
    return make_status(StatusOf::authentication, 100);
}

Json status_json(const Service& service, const Authentication& authentication,
                 const Status& status) {
    Json json = {{"startDate", service.time_text(authentication.started)},
                 {"authenticationMethod", "Token"},
                 {"authenticationMethodInfo",
                  {{"category", "Token"}, {"code", "token.ksef"}, {"displayName", "Token KSeF"}}},
                 {"status", status}};
    if (status.code == 200) json["isTokenRedeemed"] = authentication.redeemed;
    if (authentication.last_refresh)
        json["lastTokenRefreshDate"] = service.time_text(*authentication.last_refresh);
    if (authentication.refresh_valid_until)
        json["refreshTokenValidUntil"] = service.time_text(*authentication.refresh_valid_until);
    return json;
}

Json token_info(const Service& service, BearerKind kind, const Authentication& authentication,
                Instant valid_until) {
    return {{"token", service.bearer_tokens.make(kind, authentication, service.now(), valid_until)},
            {"validUntil", service.time_text(valid_until)}};
}

Json access_token(const Service& service, const Authentication& authentication) {
    return token_info(service, BearerKind::access, authentication,
                      service.now() + std::chrono::minutes(service.options.access_token_minutes));
}

Refusal unknown_operation(const std::string& reference) {
    return bad_request(ErrorCode::not_authenticated,
                       "Operacja uwierzytelniania o numerze referencyjnym " + reference +
                           " nie została znaleziona.");
}

/// The operation that the bearer token belongs to; after a reset there is none.
Authentication& operation_of(Service& service, const Request& request) {
    const std::string& reference = request.bearer.authentication_reference;
    Authentication* found = look_up(service.state.authentications, reference);
    if (found == nullptr) throw unknown_operation(reference);
    return *found;
}

void check_token_lives(const Service& service, const Authentication& authentication) {
    const auto* token = look_up(service.state.tokens, authentication.token_reference);
    if (token != nullptr && token->revoked)
        throw bad_request(ErrorCode::not_authorised, "Token KSeF został unieważniony.");
}

void revoke(Service& service, Authentication& authentication) {
    authentication.revoked = true;
    service.save(authentication);
}

}  // namespace

Answer make_challenge(Service& service, Request& request) {
    // The text may carry fewer digits than the clock has; what is checked later is what was
    // printed.
    const Instant made = service.options.time.truncate(service.now());
    const std::string challenge = service.new_reference("CR");
    auto& challenges = service.state.challenges;
    if (challenges.size() >= most_challenges)
        std::erase_if(challenges,
                      [&](const auto& it) { return made - it.second > challenge_lifetime; });
    if (challenges.size() >= most_challenges) challenges.clear();
    challenges[challenge] = made;
    return Answer::json(200, {{"challenge", challenge},
                              {"timestamp", service.time_text(made)},
                              {"timestampMs", unix_ms(made)},
                              {"clientIp", request.remote_address}});
}

Answer public_key_certificates(Service& service, Request&) {
    return Answer::json(200, service.keys.published(service.now(), service.options.time));
}

Answer authenticate_with_token(Service& service, Request& request) {
    const Json body = read_body(request);
    const std::string challenge = required_text(body, "challenge");
    if (character_count(challenge) != challenge_length)
        throw invalid_input("Wyzwanie musi mieć długość 36 znaków.");
    Authentication attempt;
    attempt.context = read_context(body);
    const std::string encrypted_token = required_bytes(body, "encryptedToken");
    const std::string key_id = read_key_id(service, token_usage, body);
    attempt.allowed_ips = read_allowed_ips(body);
    const Instant challenge_made = take_challenge(service, challenge);

    attempt.reference = service.new_reference("AU");
    attempt.started = service.now();
    attempt.outcome = judge_attempt(service, attempt, challenge_made, encrypted_token, key_id);
    apply_verdicts(service, "processing/authentication", StatusOf::authentication, attempt.outcome);
    const Authentication& kept = service.state.add(std::move(attempt));
    service.save(kept);
    const Instant valid_until = kept.started + authentication_token_lifetime;
    return Answer::json(202,
                        {{"referenceNumber", kept.reference},
                         {"authenticationToken",
                          token_info(service, BearerKind::authentication, kept, valid_until)}});
}

Answer authentication_status(Service& service, Request& request) {
    Authentication& authentication = operation_of(service, request);
    const std::string& reference = request.parameters.at(0);
    if (authentication.reference != reference) throw unknown_operation(reference);
    const Status status = observe(service, authentication);
    return Answer::json(200, status_json(service, authentication, status));
}

Answer redeem_tokens(Service& service, Request& request) {
    Authentication& authentication = operation_of(service, request);
    const int code = observe(service, authentication).code;
    if (code != 200)
        throw bad_request(ErrorCode::not_authorised, "Status uwierzytelniania (" +
                                                         std::to_string(code) +
                                                         ") nie pozwala na pobranie tokenów.");
    if (authentication.redeemed)
        throw bad_request(ErrorCode::not_authorised, "Tokeny dla operacji uwierzytelniania " +
                                                         authentication.reference +
                                                         " zostały już pobrane.");
    check_token_lives(service, authentication);
    const Instant refresh_until = service.now() + refresh_token_lifetime;
    authentication.redeemed = true;
    authentication.refresh_valid_until = refresh_until;
    service.save(authentication);
    return Answer::json(200, {{"accessToken", access_token(service, authentication)},
                              {"refreshToken", token_info(service, BearerKind::refresh,
                                                          authentication, refresh_until)}});
}

Answer refresh_access_token(Service& service, Request& request) {
    Authentication& authentication = operation_of(service, request);
    if (authentication.revoked)
        throw bad_request(
            ErrorCode::not_authorised,
            {"Status uwierzytelniania (425) nie pozwala na odświeżenie tokenu dostępowego."});
    check_token_lives(service, authentication);
    authentication.last_refresh = service.now();
    service.save(authentication);
    return Answer::json(200, {{"accessToken", access_token(service, authentication)}});
}

Answer list_authentications(Service& service, Request& request) {
    const Authentication& caller = service.authentication_of(request);
    std::vector<const Authentication*> active;
    for (auto reference = service.state.authentication_order.rbegin();
         reference != service.state.authentication_order.rend(); ++reference) {
        const Authentication& it = service.state.authentications.at(*reference);
        if (it.context == caller.context && it.redeemed && !it.revoked &&
            it.refresh_valid_until > service.now())
            active.push_back(&it);
    }
    return list_answer(request, 100, "items", active, [&](const Authentication* it) {
        Json item = status_json(service, *it, it->outcome);
        item["referenceNumber"] = it->reference;
        item["isCurrent"] = it->reference == caller.reference;
        return item;
    });
}

Answer revoke_current_authentication(Service& service, Request& request) {
    revoke(service, service.authentication_of(request));
    return Answer::empty(204);
}

Answer revoke_authentication(Service& service, Request& request) {
    const std::string& reference = reference_parameter(request, 0);
    Authentication* found = look_up(service.state.authentications, reference);
    if (found == nullptr || found->context != service.authentication_of(request).context)
        throw invalid_input("Sesja uwierzytelnienia o numerze referencyjnym " + reference +
                            " nie została znaleziona.");
    revoke(service, *found);
    return Answer::empty(204);
}

}  // namespace tavrix::sandbox
