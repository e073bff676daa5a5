// Signed addresses of the service's cloud storage, for confirmations and for parts of packages: no
// bearer token, an expiry, a signature in the query.
#pragma once

#include "sandbox/service/service.h"

namespace tavrix::sandbox {

/// True for a request that carries the signature of its own address, and in time.
bool link_is_good(const Service& service, const Request& request);
/// The storage's answer to one that does not.
Answer link_refused();

struct StorageLink {
    std::string url;
    Instant valid_until;
};

StorageLink invoice_upo_link(const Service& service, const Request& request,
                             const Invoice& invoice);
StorageLink session_upo_link(const Service& service, const Request& request,
                             const Session& session);

/// A hundred million bytes of a package, and what encrypting adds to them.
inline constexpr std::int64_t largest_part = 100'000'016;
/// The session to which a request may upload a part, by its address alone; otherwise null.
const Session* awaited_part(const Service& service, const Request& request);

/// Where a part of a package is to be put, until the time for its upload is over.
std::string part_upload_url(const Service& service, const Request& request, const Session& session,
                            int ordinal);

/// The XML answer with the header that carries its hash.
Answer hashed_xml(const std::string& xml);

}  // namespace tavrix::sandbox
