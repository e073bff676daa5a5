// Values: the examples of /limits/context, /limits/subject and /rate-limits in the contract.
#include "sandbox/service/operations.h"

#include "sandbox/exchange/rate_limits.h"

namespace tavrix::sandbox {

Answer rate_limits(Service&, Request&) {
    return Answer::json(200, published_rate_limits());
}

Answer context_limits(Service&, Request&) {
    const Json session = {{"maxInvoiceSizeInMB", 1},
                          {"maxInvoiceWithAttachmentSizeInMB", 3},
                          {"maxInvoices", 10'000}};
    return Answer::json(200, {{"onlineSession", session}, {"batchSession", session}});
}

Answer subject_limits(Service&, Request&) {
    return Answer::json(
        200, {{"enrollment", {{"maxEnrollments", 12}}}, {"certificate", {{"maxCertificates", 6}}}});
}

}  // namespace tavrix::sandbox
