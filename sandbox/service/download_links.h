// Confirmations by signed address, as the service's cloud storage hands them out: no bearer token,
// an expiry, a signature in the query.
#pragma once

#include "sandbox/service/service.h"

namespace tavrix::sandbox {

struct StorageLink {
    std::string url;
    Instant valid_until;
};

StorageLink invoice_upo_link(const Service& service, const Request& request,
                             const Invoice& invoice);
StorageLink session_upo_link(const Service& service, const Request& request,
                             const Session& session);

/// The XML answer with the header that carries its hash.
Answer hashed_xml(const std::string& xml);

}  // namespace tavrix::sandbox
