#include "sandbox/service/service.h"

#include <charconv>

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/ksef_number.h"
#include "sandbox/service/tokens.h"

namespace tavrix::sandbox {
namespace {

std::string stored_secret(Store& store) {
    if (const auto saved = store.setting("secret"))
        if (auto secret = base64_decode(*saved)) return *secret;
    std::string secret = random_bytes(32);
    store.save_setting("secret", base64_encode(secret));
    return secret;
}

KeyRing stored_keys(Store& store, Instant now) {
    if (const auto saved = store.setting("keys")) return KeyRing::load(*saved);
    KeyRing keys = KeyRing::generate(now);
    store.save_setting("keys", keys.save());
    return keys;
}

BadRequest bad_continuation_token() {
    return BadRequest(ErrorCode::bad_continuation_token);
}

/// The service's own tokens are opaque Base64 of JSON; so are these.
std::string make_continuation_token(std::size_t offset) {
    return base64_encode(dump(Json::array({{{"token", nullptr}, {"skipCount", offset}}})));
}

std::size_t read_continuation_token(const std::string& token) {
    const auto text = base64_decode(token);
    if (!text) throw bad_continuation_token();
    try {
        return parse_json(*text).at(0).at("skipCount").get<std::size_t>();
    } catch (const Json::exception&) {
        throw bad_continuation_token();
    }
}

}  // namespace

Service::Service(Options given, std::unique_ptr<Clock> its_clock, std::unique_ptr<Store> its_store)
    : options(std::move(given)),
      clock(std::move(its_clock)),
      store(std::move(its_store)),
      secret(stored_secret(*store)),
      keys(stored_keys(*store, clock->now())),
      bearer_tokens(secret) {
    if (!options.schema_folder.empty()) schemas.emplace(options.schema_folder);
    store->load(state);
    for (const std::string& token : options.tokens) register_token(*this, token);
    if (options.rotate_keys) {
        keys.rotate(token_usage, now());
        keys.rotate(symmetric_key_usage, now());
        save_keys();
    }
    for (const Fault& fault : options.faults) faults.add(fault);
}

std::string Service::new_reference(std::string_view kind) const {
    return make_reference_number(polish_compact_date(now()), kind);
}

Authentication& Service::authentication_of(const Request& request) {
    const auto found = state.authentications.find(request.bearer.authentication_reference);
    if (found == state.authentications.end()) throw Unauthorized();
    return found->second;
}

Session& Service::session_of(const Request& request, const std::string& reference,
                             std::string_view not_found) {
    const auto found = state.sessions.find(reference);
    if (found == state.sessions.end() ||
        found->second.context != authentication_of(request).context)
        throw BadRequest(ErrorCode::session_not_found,
                         {"Sesja o numerze referencyjnym " + reference + " nie została " +
                          std::string(not_found) + "."});
    return found->second;
}

void Service::reset() {
    state = State();
    store->clear();
    faults.clear();
    for (const std::string& token : options.tokens) register_token(*this, token);
    for (const Fault& fault : options.faults) faults.add(fault);
}

const std::string& reference_parameter(const Request& request, std::size_t index) {
    const std::string& reference = request.parameters.at(index);
    if (!is_reference_number(reference))
        throw invalid_input("Numer referencyjny musi mieć długość 36 znaków.");
    return reference;
}

std::size_t page_size(const Request& request, std::size_t least, std::size_t most) {
    const auto text = request.parameter("pageSize");
    if (!text) return 10;
    std::size_t size = 0;
    const auto read = std::from_chars(text->data(), text->data() + text->size(), size);
    if (read.ec != std::errc() || read.ptr != text->data() + text->size() || size < least ||
        size > most)
        throw invalid_input("Rozmiar strony musi być liczbą od " + std::to_string(least) + " do " +
                            std::to_string(most) + ".");
    return size;
}

Page page_of(const Request& request, std::size_t total, std::size_t size) {
    std::string token(request.header("x-continuation-token"));
    if (token.empty()) token = request.parameter("x-continuation-token").value_or("");
    // A token in a query is rarely encoded, and '+' then arrives as a blank.
    for (char& c : token)
        if (c == ' ') c = '+';
    Page page;
    page.from = std::min(token.empty() ? 0 : read_continuation_token(token), total);
    page.to = std::min(page.from + size, total);
    if (page.to < total) page.continuation_token = make_continuation_token(page.to);
    return page;
}

}  // namespace tavrix::sandbox
