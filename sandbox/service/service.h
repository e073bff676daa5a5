// What the operations work on. One mutex, the dispatcher's, guards all of it.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "sandbox/documents/schemas.h"
#include "sandbox/exchange/exchange.h"
#include "sandbox/exchange/faults.h"
#include "sandbox/exchange/refusals.h"
#include "sandbox/service/bearer_tokens.h"
#include "sandbox/service/keys.h"
#include "sandbox/service/options.h"
#include "sandbox/store/package_files.h"
#include "sandbox/store/records.h"

namespace tavrix::sandbox {

class PackageWork;

// Source: the contract, /limits/context.
inline constexpr std::size_t most_invoices_per_session = 10'000;

struct Service {
    /// Loads what the store holds, or makes keys and a secret and saves them.
    Service(Options options, Clock& clock, std::unique_ptr<Store> store);
    ~Service();

    Options options;
    Clock& clock;
    std::unique_ptr<Store> store;
    std::string secret;
    KeyRing keys;
    BearerTokens bearer_tokens;
    State state;
    FaultList faults;
    std::optional<SchemaFolder> schemas;
    PackageFiles packages;
    /// On the package that is being unpacked; null while there is none.
    std::unique_ptr<PackageWork> package_work;

    Instant now() const { return clock.now(); }
    std::string time_text(Instant moment) const { return options.time.text(moment); }
    std::string new_reference(std::string_view kind) const;

    /// The authentication behind the request's bearer token.
    Authentication& authentication_of(const Request& request);
    /// The session in the path if it is of the caller's context, otherwise null. Refusal 21405 for
    /// what is no reference number.
    Session* find_session(const Request& request);
    /// The same, or refusal 21173.
    /// \param not_found the contract's verb for it: "odnaleziona" for commands, "znaleziona" for
    /// queries.
    Session& session_of(const Request& request, const char* not_found = "znaleziona");

    template <typename Record>
    void save(const Record& record) {
        if (store->keeps()) tavrix::sandbox::save(*store, record);
    }
    void save_keys() { store->write("setting", "keys", keys.save()); }
    /// Forgets records, challenges and faults; keys stay.
    void reset();

  private:
    void take_over_options();
    void forget_packages_not_waiting();
};

/// Refusal 21405 for what is no reference number.
void check_reference(const std::string& text);
/// The route's parameter as a reference number, or refusal 21405.
const std::string& reference_parameter(const Request& request, std::size_t index);

/// `publicKeyId` of a body, empty when it names none. Refusal 21405 for one that cannot be, 21470
/// for one that names no valid key.
std::string read_key_id(const Service& service, std::string_view usage, const Json& body);

/// One page of a list of `total` entries, as `pageSize` (10 to `most`) and the continuation token
/// of the request choose it. The token comes in the header or, from older clients, in the query.
struct Page {
    std::size_t from = 0;
    std::size_t to = 0;
    /// Empty on the last page.
    std::string continuation_token;
};
Page page_of(const Request& request, std::size_t total, std::size_t most);
/// Reads `pageSize`, or refusal 21405 when it is outside 10 to `most`.
std::size_t requested_page_size(const Request& request, std::size_t most);

/// The answer that carries one page of a list under a name.
template <typename List, typename Render>
Answer list_answer(const Request& request, std::size_t most, const char* name, const List& list,
                   Render render) {
    const Page page = page_of(request, list.size(), most);
    Json answer = Json::object();
    if (!page.continuation_token.empty()) answer["continuationToken"] = page.continuation_token;
    answer[name] = Json::array();
    for (std::size_t i = page.from; i < page.to; ++i) answer[name].push_back(render(list[i]));
    return Answer::json(200, answer);
}

}  // namespace tavrix::sandbox
