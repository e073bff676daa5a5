#include "sandbox/service/bearer_tokens.h"

#include <openssl/crypto.h>

#include <algorithm>

#include "sandbox/basics/crypto.h"

namespace tavrix::sandbox {
namespace {

constexpr std::string_view token_start = "eyJ";

/// The service's own names of the kinds, by BearerKind.
constexpr std::string_view claims_of[] = {"", "", "OperationToken", "ContextToken", "RefreshToken"};

BearerKind kind_from_claim(std::string_view claim) {
    const auto* found = std::find(std::begin(claims_of) + 2, std::end(claims_of), claim);
    return found == std::end(claims_of) ? BearerKind::unknown
                                        : BearerKind(found - std::begin(claims_of));
}

}  // namespace

std::string BearerTokens::sign(std::string_view head_and_claims) const {
    return base64_url_encode(hmac_sha256(secret_, head_and_claims));
}

std::string BearerTokens::make(BearerKind kind, const Authentication& authentication,
                               Instant issued, Instant valid_until) const {
    const Json head = {{"alg", "HS256"}, {"typ", "JWT"}};
    Json claims = {{"token-type", claims_of[int(kind)]},
                   {"operation-reference-number", authentication.reference}};
    if (kind != BearerKind::authentication) {
        claims["context-identifier-type"] = authentication.context.type;
        claims["context-identifier-value"] = authentication.context.value;
        claims["authentication-method"] = "Token";
        // Tells apart two access tokens of one second.
        claims["jti"] = random_hex(16);
    }
    claims["exp"] = unix_ms(valid_until) / 1000;
    claims["iat"] = unix_ms(issued) / 1000;
    claims["iss"] = "ksef-api-sandbox";
    claims["aud"] = "ksef-api-sandbox";
    const std::string signed_part =
        base64_url_encode(dump(head)) + "." + base64_url_encode(dump(claims));
    return signed_part + "." + sign(signed_part);
}

Bearer BearerTokens::read(std::string_view authorization, Instant now) const {
    if (authorization.empty()) return {};
    Bearer bearer{BearerKind::unknown, {}, false};
    constexpr std::string_view scheme = "Bearer ";
    if (!authorization.starts_with(scheme)) return bearer;
    const std::string_view token = authorization.substr(scheme.size());
    const std::size_t claims_at = token.find('.'), signature_at = token.rfind('.');
    if (claims_at == std::string_view::npos || claims_at == signature_at) return bearer;

    const std::string expected = sign(token.substr(0, signature_at));
    const std::string_view signature = token.substr(signature_at + 1);
    if (signature.size() != expected.size() ||
        CRYPTO_memcmp(signature.data(), expected.data(), expected.size()) != 0)
        return bearer;

    // Signed by this sandbox, so the claims are what make() wrote.
    const auto claims_text =
        base64_url_decode(token.substr(claims_at + 1, signature_at - claims_at - 1));
    const Json claims = parse_json(claims_text.value_or("{}"));
    bearer.kind = kind_from_claim(claims.at("token-type").get<std::string>());
    bearer.authentication_reference = claims.at("operation-reference-number").get<std::string>();
    bearer.expired = unix_ms(now) / 1000 >= claims.at("exp").get<std::int64_t>();
    return bearer;
}

std::string mask_tokens(std::string_view text) {
    constexpr std::string_view token_characters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.";
    std::string result;
    std::size_t at = 0;
    for (;;) {
        const std::size_t start = text.find(token_start, at);
        result += text.substr(at, start - at);
        if (start == std::string_view::npos) return result;
        const std::size_t end =
            std::min(text.find_first_not_of(token_characters, start), text.size());
        result += end - start > 40 ? "{token}" : std::string(text.substr(start, end - start));
        at = end;
    }
}

}  // namespace tavrix::sandbox
