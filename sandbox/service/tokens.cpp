#include "sandbox/service/tokens.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <stdexcept>

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/ksef_number.h"
#include "sandbox/basics/text.h"
#include "sandbox/exchange/body.h"
#include "sandbox/service/operations.h"

namespace tavrix::sandbox {
namespace {

constexpr std::array<const char*, 7> all_permissions = {
    "InvoiceRead",   "InvoiceWrite",          "CredentialsRead", "CredentialsManage",
    "SubunitManage", "EnforcementOperations", "Introspection"};

/// The three parts of a token between vertical bars.
struct TokenText {
    std::string reference;
    Context context;
};

/// Reads `reference|nip-NNNNNNNNNN|secret` or `reference|internalId-NNNNNNNNNN-nnnnn|secret`.
std::optional<TokenText> read_token_text(const std::string& token) {
    const std::size_t first = token.find('|'), second = token.find('|', first + 1);
    if (first == std::string::npos || second == std::string::npos || second + 1 == token.size())
        return std::nullopt;
    const std::string owner = token.substr(first + 1, second - first - 1);
    const std::size_t hyphen = owner.find('-');
    if (first == 0 || hyphen == std::string::npos) return std::nullopt;
    const std::string kind = lower(owner.substr(0, hyphen));
    TokenText text{token.substr(0, first), {"", owner.substr(hyphen + 1)}};
    if (kind == "nip" && is_nip(text.context.value)) text.context.type = "Nip";
    if (kind == "internalid" && is_internal_id(text.context.value))
        text.context.type = "InternalId";
    if (text.context.type.empty()) return std::nullopt;
    return text;
}

/// A token of an internal unit is also good for the company itself: older clients know tax numbers
/// only.
bool covers(const Context& token, const Context& asked) {
    return token == asked || (asked.type == "Nip" && token.nip() == asked.value);
}

const char* status_of(const KsefToken& token) {
    return token.revoked ? "Revoked" : "Active";
}

Json token_json(const Service& service, const KsefToken& token) {
    const Json owner = {{"type", "Nip"}, {"value", token.context.nip()}};
    Json json = {{"referenceNumber", token.reference},
                 {"authorIdentifier", owner},
                 {"contextIdentifier", token.context},
                 {"description", token.description},
                 {"requestedPermissions", token.permissions},
                 {"dateCreated", service.time_text(token.created)}};
    if (token.last_used) json["lastUseDate"] = service.time_text(*token.last_used);
    json["status"] = status_of(token);
    json["statusDetails"] = Json::array();
    return json;
}

constexpr std::string_view token_statuses[] = {"Pending", "Active", "Revoking", "Revoked",
                                               "Failed"};
constexpr std::string_view author_types[] = {"Nip", "Pesel", "Fingerprint"};

/// A text that is searched for, in lower case; empty when the parameter is absent.
std::string search_text(const Request& request, const std::string& name) {
    constexpr std::size_t shortest = 3;
    const auto text = request.parameter(name);
    if (text && character_count(*text) < shortest)
        throw invalid_input("Parametr '" + name + "' musi mieć co najmniej 3 znaki.");
    return lower_polish(text.value_or(""));
}

/// The filters of the list.
struct TokenFilter {
    std::vector<std::string> statuses;
    std::string description, author, author_type;

    bool admits(const KsefToken& token) const {
        const auto holds = [](const std::string& text, const std::string& part) {
            return lower_polish(text).find(part) != std::string::npos;
        };
        // Every author here is a company: the tokens' own, by its tax number.
        return (statuses.empty() || contains(statuses, status_of(token))) &&
               holds(token.description, description) && holds(token.context.nip(), author) &&
               (author_type.empty() || author_type == "Nip");
    }
};

TokenFilter read_token_filter(const Request& request) {
    TokenFilter filter{request.parameters_named("status"), search_text(request, "description"),
                       search_text(request, "authorIdentifier"),
                       request.parameter("authorIdentifierType").value_or("")};
    for (const std::string& status : filter.statuses)
        if (!contains(token_statuses, status))
            throw invalid_input("Nieznany status tokena: " + status + ".");
    if (request.parameter("authorIdentifierType") && !contains(author_types, filter.author_type))
        throw invalid_input("Nieznany typ identyfikatora: " + filter.author_type + ".");
    return filter;
}

/// A token of the caller's context, or refusal 21405, the only code the contract has for it.
KsefToken& own_token(Service& service, Request& request) {
    const std::string& reference = reference_parameter(request, 0);
    KsefToken* token = look_up(service.state.tokens, reference);
    if (token == nullptr || token->context != service.authentication_of(request).context)
        throw invalid_input("Token o numerze referencyjnym " + reference +
                            " nie został znaleziony.");
    return *token;
}

/// A list of names; older clients send one text with commas between them.
std::vector<std::string> read_permissions(const Json& body, bool strict) {
    const Json* value = given(body, "permissions");
    if (strict || value == nullptr || !value->is_string()) return text_list(body, "permissions");
    std::vector<std::string> names;
    std::istringstream text(value->get<std::string>());
    for (std::string name; std::getline(text, name, ',');) names.push_back(name);
    return names;
}

}  // namespace

TokenVerdict judge_token(Service& service, const std::string& token, const Context& context) {
    TokenVerdict verdict;
    const auto text = read_token_text(token);
    if (!text || !covers(text->context, context)) {
        verdict.refusal = "Nieprawidłowy token";
        return verdict;
    }
    verdict.reference = text->reference;
    if (KsefToken* known = look_up(service.state.tokens, text->reference)) {
        verdict.permissions = known->permissions;
        if (known->hash != sha256_base64(token)) {
            verdict.refusal = "Nieprawidłowy token";
        } else if (known->revoked) {
            verdict.refusal = "Token unieważniony";
        } else {
            known->last_used = service.now();
            service.save(*known);
        }
        return verdict;
    }
    if (!service.options.tokens.empty()) verdict.refusal = "Nieprawidłowy token";
    verdict.permissions.assign(all_permissions.begin(), all_permissions.end());
    return verdict;
}

void register_token(Service& service, const std::string& token) {
    const auto text = read_token_text(token);
    if (!text)
        throw std::invalid_argument("a KSeF token has the form reference|nip-NNNNNNNNNN|secret");
    if (service.state.tokens.contains(text->reference)) return;
    KsefToken entry;
    entry.reference = text->reference;
    entry.hash = sha256_base64(token);
    entry.context = text->context;
    entry.description = "Token z wiersza poleceń";
    entry.permissions.assign(all_permissions.begin(), all_permissions.end());
    entry.created = service.now();
    service.save(entry);
    service.state.tokens[entry.reference] = entry;
}

Answer create_token(Service& service, Request& request) {
    const Json body = read_body(request);
    const Authentication& author = service.authentication_of(request);
    KsefToken token;
    token.permissions = read_permissions(body, service.options.strict);
    if (token.permissions.empty())
        throw invalid_input("Wymagane jest co najmniej jedno uprawnienie.");
    for (const std::string& permission : token.permissions) {
        if (!contains(all_permissions, permission))
            throw invalid_input("Nieznane uprawnienie: " + permission + ".");
        if (!contains(author.permissions, permission))
            throw bad_request(ErrorCode::permissions_not_held,
                              "Brak uprawnienia: " + permission + ".");
    }
    token.description = required_text(body, "description");
    const std::size_t length = character_count(token.description);
    if (length < 5 || length > 256)
        throw invalid_input("Opis tokena musi mieć od 5 do 256 znaków.");
    token.reference = service.new_reference("EC");
    token.context = author.context;
    token.created = service.now();
    const std::string kind = token.context.type == "InternalId" ? "internalId" : "nip";
    const std::string text = token.reference + "|" + kind + "-" + token.context.value + "|" +
                             lower_hex(random_bytes(32));
    token.hash = sha256_base64(text);
    service.save(token);
    const std::string reference = token.reference;
    service.state.tokens[reference] = std::move(token);
    return Answer::json(202, {{"referenceNumber", reference}, {"token", text}});
}

Answer list_tokens(Service& service, Request& request) {
    const Authentication& caller = service.authentication_of(request);
    const TokenFilter filter = read_token_filter(request);
    // Who may not look at credentials sees the token used to sign in, and no other.
    const bool all = contains(caller.permissions, "CredentialsRead") ||
                     contains(caller.permissions, "CredentialsManage");
    std::vector<const KsefToken*> found;
    for (const auto& [reference, token] : service.state.tokens) {
        if (token.context == caller.context && (all || reference == caller.token_reference) &&
            filter.admits(token))
            found.push_back(&token);
    }
    std::stable_sort(found.begin(), found.end(), [](const KsefToken* a, const KsefToken* b) {
        return a->created > b->created;
    });
    return list_answer(request, 100, "tokens", found,
                       [&](const KsefToken* token) { return token_json(service, *token); });
}

Answer token_status(Service& service, Request& request) {
    return Answer::json(200, token_json(service, own_token(service, request)));
}

Answer revoke_token(Service& service, Request& request) {
    KsefToken& token = own_token(service, request);
    const Authentication& caller = service.authentication_of(request);
    if (!contains(caller.permissions, "CredentialsManage") &&
        token.reference != caller.token_reference)
        throw forbidden({"CredentialsManage"}, caller.permissions);
    token.revoked = true;
    service.save(token);
    return Answer::empty(204);
}

}  // namespace tavrix::sandbox
