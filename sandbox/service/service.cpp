#include "sandbox/service/service.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/ksef_number.h"
#include "sandbox/basics/path.h"
#include "sandbox/basics/text.h"
#include "sandbox/exchange/body.h"
#include "sandbox/service/certificates.h"
#include "sandbox/service/package_work.h"
#include "sandbox/service/tokens.h"

namespace tavrix::sandbox {
namespace {

std::string stored_secret(Store& store) {
    if (const auto saved = store.read("setting", "secret"))
        if (auto secret = base64_decode(*saved)) return *secret;
    std::string secret = random_bytes(32);
    store.write("setting", "secret", base64_encode(secret));
    return secret;
}

KeyRing stored_keys(Store& store, Instant now) {
    if (const auto saved = store.read("setting", "keys")) return KeyRing::load(*saved);
    KeyRing keys = KeyRing::generate(now);
    store.write("setting", "keys", keys.save());
    return keys;
}

/// The service's own tokens are opaque Base64 of JSON; so are these.
std::string make_continuation_token(std::size_t offset) {
    return base64_encode(dump(Json::array({{{"token", nullptr}, {"skipCount", offset}}})));
}

std::size_t read_continuation_token(const std::string& token) {
    try {
        const std::string text = base64_decode(token).value_or("");
        return parse_json(text).at(0).at("skipCount").get<std::size_t>();
    } catch (const Json::exception&) {
        throw bad_request(ErrorCode::bad_continuation_token);
    }
}

}  // namespace

Service::Service(Options given, Clock& its_clock, std::unique_ptr<Store> its_store)
    : options(std::move(given)),
      clock(its_clock),
      store(std::move(its_store)),
      secret(stored_secret(*store)),
      keys(stored_keys(*store, clock.now())),
      bearer_tokens(secret),
      packages(path_of(options.data_folder)) {
    if (!options.schema_folder.empty()) schemas.emplace(path_of(options.schema_folder));
    load(*store, state);
    forget_packages_not_waiting();
    take_over_options();
    if (!options.rotate_keys) return;
    keys.rotate(token_usage, now());
    keys.rotate(symmetric_key_usage, now());
    save_keys();
}

Service::~Service() = default;

std::string Service::new_reference(std::string_view kind) const {
    return make_reference_number(polish_compact_date(now()), kind);
}

Authentication& Service::authentication_of(const Request& request) {
    auto* found = look_up(state.authentications, request.bearer.authentication_reference);
    if (found == nullptr) throw unauthorized();
    return *found;
}

Session* Service::find_session(const Request& request) {
    Session* session = look_up(state.sessions, reference_parameter(request, 0));
    const bool own = session != nullptr && session->context == authentication_of(request).context;
    return own ? session : nullptr;
}

Session& Service::session_of(const Request& request, const char* not_found) {
    Session* session = find_session(request);
    if (session == nullptr)
        throw bad_request(ErrorCode::session_not_found, "Sesja o numerze referencyjnym " +
                                                            request.parameters.at(0) +
                                                            " nie została " + not_found + ".");
    return *session;
}

void Service::reset() {
    package_work.reset();
    state = State();
    forget_state(*store);
    forget_packages_not_waiting();
    faults.clear();
    take_over_options();
}

void Service::forget_packages_not_waiting() {
    std::set<std::string> waiting;
    for (const auto& [reference, session] : state.sessions)
        if (session.package && !session.package->unpacked) waiting.insert(reference);
    packages.keep_only(waiting);
}

void Service::take_over_options() {
    for (const std::string& file : options.certificate_files) {
        std::ifstream stream(path_of(file), std::ios::binary);
        const std::string pem{std::istreambuf_iterator<char>(stream), {}};
        try {
            register_certificate(*this, {pem, {}, {}, {}});
        } catch (const std::invalid_argument& error) {
            throw std::runtime_error(file + ": " + error.what());
        }
    }
    for (const std::string& token : options.tokens) register_token(*this, token);
    for (const Fault& fault : options.faults) faults.add(fault);
}

void check_reference(const std::string& text) {
    if (!is_reference_number(text))
        throw invalid_input("Numer referencyjny musi mieć długość 36 znaków.");
}

const std::string& reference_parameter(const Request& request, std::size_t index) {
    const std::string& reference = request.parameters.at(index);
    check_reference(reference);
    return reference;
}

std::string read_key_id(const Service& service, std::string_view usage, const Json& body) {
    if (given(body, "publicKeyId") == nullptr) return {};
    std::string key_id = required_hash(body, "publicKeyId");
    if (!service.keys.knows(usage, key_id, service.now()))
        throw bad_request(ErrorCode::unknown_key,
                          "Klucz o identyfikatorze " + key_id + " nie jest wspierany.");
    return key_id;
}

std::size_t requested_page_size(const Request& request, std::size_t most) {
    constexpr std::size_t least = 10;
    const auto text = request.parameter("pageSize");
    if (!text) return least;
    const auto size = number_of<std::size_t>(*text);
    if (!size || *size < least || *size > most)
        throw invalid_input("Rozmiar strony musi być liczbą od " + std::to_string(least) + " do " +
                            std::to_string(most) + ".");
    return *size;
}

Page page_of(const Request& request, std::size_t total, std::size_t most) {
    const std::size_t size = requested_page_size(request, most);
    std::string token(request.header("x-continuation-token"));
    if (token.empty()) token = request.parameter("x-continuation-token").value_or("");
    // A token in a query is rarely encoded, and '+' then arrives as a blank.
    std::replace(token.begin(), token.end(), ' ', '+');
    Page page;
    page.from = std::min(token.empty() ? 0 : read_continuation_token(token), total);
    page.to = std::min(page.from + size, total);
    if (page.to < total) page.continuation_token = make_continuation_token(page.to);
    return page;
}

}  // namespace tavrix::sandbox
