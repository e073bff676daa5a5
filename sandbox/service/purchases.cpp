#include "sandbox/service/purchases.h"

#include <stdexcept>

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/ksef_number.h"
#include "sandbox/documents/fa3.h"
#include "sandbox/documents/made_up_invoice.h"
#include "sandbox/service/processing.h"

namespace tavrix::sandbox {
namespace {

/// A session of a seller that signed in with a token nobody knows.
Session& open_for(Service& service, const std::string& seller) {
    Authentication authentication;
    authentication.reference = service.new_reference("AU");
    authentication.context = {"Nip", seller};
    authentication.token_reference = service.new_reference("EC");
    authentication.started = service.now();
    authentication.outcome = make_status(StatusOf::authentication, 200);
    authentication.finished = authentication.redeemed = true;

    Session session;
    session.reference = service.new_reference("SB");
    session.kind = SessionKind::batch;
    session.context = authentication.context;
    session.authentication_reference = authentication.reference;
    session.form_code = {"FA (3)", "1-0E", "FA"};
    session.created = session.updated = service.now();
    session.valid_until = session.created;
    session.closed = session.created;
    session.stage = SessionStage::closed;
    session.status = make_status(StatusOf::batch_session, 150);
    service.save(service.state.add(std::move(authentication)));
    return service.state.add(std::move(session));
}

void add_one(Service& service, Session& session, std::string xml, Instant when) {
    Invoice invoice;
    invoice.reference = service.new_reference("EE");
    invoice.session_reference = session.reference;
    invoice.ordinal = int(session.invoices.size()) + 1;
    invoice.invoice_hash = sha256_base64(xml);
    invoice.invoice_size = std::int64_t(xml.size());
    invoice.xml = std::move(xml);
    invoice.received = invoice.stage_since = when;
    // Judged on the spot, whatever pace is set for those that clients send.
    invoice.stage = InvoiceStage::finished;
    session.invoices.push_back(invoice.reference);
    finish_invoice(service, session, service.state.add(std::move(invoice)), when);
}

std::string seller_of(const Purchases& purchases) {
    if (purchases.xml.empty()) return purchases.seller;
    const ParsedXml parsed = parse_xml(purchases.xml);
    if (!parsed.document) throw std::invalid_argument("xml: " + parsed.error);
    return summarize_invoice(Element::root_of(parsed.document)).summary.seller.identifier;
}

}  // namespace

std::vector<std::string> add_purchases(Service& service, const Purchases& purchases) {
    const std::string seller = seller_of(purchases);
    if (!is_nip(seller)) throw std::invalid_argument("the seller has no tax number");
    const Instant now = service.now();
    const int first = int(service.state.invoices.size()) + 1;
    Session& session = open_for(service, seller);
    std::vector<std::string> numbers;
    for (int i = 0; i < purchases.count; ++i) {
        // A millisecond apart: queries that go on from the last date must get further.
        const Instant when = now - std::chrono::milliseconds(purchases.count - i);
        const MadeUpInvoice made_up{seller,
                                    purchases.buyer,
                                    purchases.buyer_unit,
                                    "ZAK/" + std::to_string(first + i),
                                    polish_date_text(when),
                                    100 + i % 900};
        add_one(service, session, purchases.xml.empty() ? make_up(made_up) : purchases.xml, when);
        const Invoice& added = service.state.invoices.at(session.invoices.back());
        if (added.status.code != 200)
            throw std::invalid_argument("not accepted: " + dump(Json(added.status)));
        numbers.push_back(added.ksef_number);
    }
    return numbers;
}

}  // namespace tavrix::sandbox
