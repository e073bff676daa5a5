// What the operations work on. One mutex, the dispatcher's, guards all of it.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "sandbox/documents/schemas.h"
#include "sandbox/exchange/errors.h"
#include "sandbox/exchange/exchange.h"
#include "sandbox/exchange/faults.h"
#include "sandbox/service/bearer_tokens.h"
#include "sandbox/service/keys.h"
#include "sandbox/service/options.h"
#include "sandbox/store/model.h"
#include "sandbox/store/store.h"

namespace tavrix::sandbox {

struct Service {
    /// Loads what the store holds, or makes keys and a secret and saves them.
    Service(Options options, std::unique_ptr<Clock> clock, std::unique_ptr<Store> store);

    Options options;
    std::unique_ptr<Clock> clock;
    std::unique_ptr<Store> store;
    std::string secret;
    KeyRing keys;
    BearerTokens bearer_tokens;
    State state;
    FaultList faults;
    std::optional<SchemaFolder> schemas;

    Instant now() const { return clock->now(); }
    std::string time_text(Instant moment) const { return options.time.text(moment); }
    std::string new_reference(std::string_view kind) const;

    /// The authentication behind the request's bearer token.
    Authentication& authentication_of(const Request& request);
    /// A session of the caller's context, or BadRequest 21173.
    /// \param not_found the contract's verb for it: "odnaleziona" for commands, "znaleziona" for
    /// queries.
    Session& session_of(const Request& request, const std::string& reference,
                        std::string_view not_found = "znaleziona");

    void save_keys() { store->save_setting("keys", keys.save()); }
    /// Forgets records, challenges and faults; keys stay.
    void reset();
};

/// The route's parameter as a reference number, or BadRequest 21405.
const std::string& reference_parameter(const Request& request, std::size_t index);

/// Reads `pageSize`, or BadRequest 21405 when it is outside the limits.
std::size_t page_size(const Request& request, std::size_t least, std::size_t most);

/// One page of a list of `total` entries.
struct Page {
    std::size_t from = 0;
    std::size_t to = 0;
    /// Empty on the last page.
    std::string continuation_token;
};
/// Applies the request's continuation token, from the header or, as older clients send it, the
/// query.
Page page_of(const Request& request, std::size_t total, std::size_t size);

}  // namespace tavrix::sandbox
