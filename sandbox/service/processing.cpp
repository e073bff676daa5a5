#include "sandbox/service/processing.h"

#include <algorithm>

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/ksef_number.h"
#include "sandbox/documents/upo.h"
#include "sandbox/documents/verification.h"
#include "sandbox/store/statuses.h"

namespace tavrix::sandbox {
namespace {

/// The moment a stage ends, or nothing while it lasts.
std::optional<Instant> stage_end(const Pace& pace, int polls, Instant since, Instant now) {
    if (polls < pace.polls) return std::nullopt;
    const Instant due = since + std::chrono::milliseconds(pace.delay_ms);
    if (now < due) return std::nullopt;
    // Counted in polls the stage ends when somebody asks; counted in time, whenever its time is up.
    return pace.polls > 0 ? now : due;
}

std::string new_ksef_number(const Service& service, const Invoice& invoice) {
    std::string number;
    do {
        number = make_ksef_number(invoice.summary->seller.identifier,
                                  polish_compact_date(invoice.received), random_hex(12));
    } while (service.state.accepted(number) != nullptr);
    return number;
}

}  // namespace

void finish_invoice(Service& service, Session& session, Invoice& invoice, Instant when) {
    const Criteria criteria{service.state, service.schemas ? &*service.schemas : nullptr,
                            service.options.refuse_attachments};
    invoice.status = verify_invoice(criteria, session, invoice);
    apply_verdicts(service, "processing/invoice", StatusOf::invoice, invoice.status);
    // An ordered success cannot make an invoice of a document that is none.
    if (invoice.status.code == 200 && !invoice.summary)
        invoice.status = make_status(StatusOf::invoice, 450);
    invoice.stage = InvoiceStage::finished;
    if (invoice.status.code == 200) {
        invoice.acquired = when;
        invoice.stored = when + std::max(service.options.time.unit(), Ticks(1000));
        invoice.ksef_number = new_ksef_number(service, invoice);
        service.state.index_accepted(invoice);
        invoice.upo = make_invoice_upo(
            session, service.state.authentications.at(session.authentication_reference), invoice);
    }
    session.count(invoice.status);
    session.updated = std::max(session.updated, when);
    service.save(invoice);
    service.save(session);
}

namespace {

void advance(Service& service, Invoice& invoice, Instant now) {
    const Options& options = service.options;
    if (invoice.stage == InvoiceStage::accepted) {
        const auto end =
            stage_end(options.invoice_accepted, invoice.polls, invoice.stage_since, now);
        if (!end) return;
        invoice.stage = InvoiceStage::processing;
        invoice.stage_since = *end;
        invoice.polls = 0;
        service.save(invoice);
    }
    if (invoice.stage == InvoiceStage::processing) {
        const auto end =
            stage_end(options.invoice_processing, invoice.polls, invoice.stage_since, now);
        if (!end) return;
        finish_invoice(service, service.state.sessions.at(invoice.session_reference), invoice,
                       *end);
    }
}

StatusOf status_kind(const Session& session) {
    return session.kind == SessionKind::online ? StatusOf::online_session : StatusOf::batch_session;
}

bool all_finished(const Session& session) {
    if (session.package && !session.package->unpacked) return false;
    return session.successful + session.failed == int(session.invoices.size());
}

void finish_session(Service& service, Session& session, Instant when) {
    session.stage = SessionStage::finished;
    session.updated = std::max(session.updated, when);
    const StatusOf kind = status_kind(session);
    if (session.package && session.package->failure.code != 0)
        session.status = session.package->failure;
    else if (session.invoices.empty())
        session.status = make_status(kind, 440);
    else
        session.status = make_status(kind, session.successful == 0 ? 445 : 200);
    apply_verdicts(service, "processing/session", kind, session.status);
    if (session.successful > 0) {
        std::vector<const Invoice*> accepted;
        for (const std::string& reference : session.invoices)
            if (const Invoice& it = service.state.invoices.at(reference); it.status.code == 200)
                accepted.push_back(&it);
        session.upo_reference = service.new_reference("EU");
        session.upo = make_session_upo(
            session, service.state.authentications.at(session.authentication_reference), accepted);
    }
    service.save(session);
}

void advance(Service& service, Session& session, Instant now) {
    if (session.stage != SessionStage::closed || !all_finished(session)) return;
    const auto end =
        stage_end(service.options.session_closing, session.polls, *session.closed, now);
    if (end) finish_session(service, session, *end);
}

}  // namespace

void apply_verdicts(Service& service, std::string_view step, StatusOf what, Status& status) {
    for (const Fault& fault : service.faults.take(step)) {
        status = make_status(what, fault.code, fault.details);
        if (!fault.description.empty()) status.description = fault.description;
    }
}

void close_session(Service& service, Session& session, Instant when) {
    session.stage = SessionStage::closed;
    session.status = session.kind == SessionKind::online
                         ? make_status(StatusOf::online_session, 170)
                         : make_status(StatusOf::batch_session, 150);
    session.closed = when;
    session.updated = when;
    service.state.closing_sessions.push_back(session.reference);
    service.save(session);
}

void cancel_upload(Service& service, Session& session, Instant when) {
    session.stage = SessionStage::finished;
    session.status = make_status(StatusOf::batch_session, 440, {"Przekroczono czas wysyłki"});
    session.updated = when;
    session.package->unpacked = true;
    service.packages.remove(session.reference);
    service.save(session);
}

void settle_invoices(Service& service) {
    const Instant now = service.now();
    State& state = service.state;
    // Everything of one kind takes equally long, so what came first is due first: a look at the
    // front is enough, however much is waiting. What is counted in polls finishes when it is asked
    // about.
    while (!state.pending_invoices.empty()) {
        Invoice& invoice = state.invoices.at(state.pending_invoices.front());
        advance(service, invoice, now);
        if (invoice.stage != InvoiceStage::finished) break;
        state.pending_invoices.pop_front();
    }
}

void settle(Service& service) {
    settle_invoices(service);
    const Instant now = service.now();
    State& state = service.state;
    while (!state.open_sessions.empty()) {
        Session& session = state.sessions.at(state.open_sessions.front());
        if (session.stage == SessionStage::open && now < session.valid_until) break;
        if (session.stage == SessionStage::open) {
            // An interactive session closes itself; a package that nobody closed was never whole.
            const auto end = session.kind == SessionKind::online ? close_session : cancel_upload;
            end(service, session, session.valid_until);
        }
        state.open_sessions.pop_front();
    }
    std::erase_if(state.closing_sessions, [&](const std::string& reference) {
        Session& session = state.sessions.at(reference);
        advance(service, session, now);
        return session.stage == SessionStage::finished;
    });
}

Status observe(Service& service, Invoice& invoice) {
    advance(service, invoice, service.now());
    switch (invoice.stage) {
        case InvoiceStage::accepted:
            ++invoice.polls;
            return make_status(StatusOf::invoice, 100);
        case InvoiceStage::processing:
            ++invoice.polls;
            return make_status(StatusOf::invoice, 150);
        case InvoiceStage::finished:
            break;
    }
    return invoice.status;
}

Status observe(Service& service, Session& session) {
    advance(service, session, service.now());
    if (session.stage == SessionStage::closed) {
        ++session.polls;
        // A client that asks about the session only would otherwise never see its invoices finish.
        for (const std::string& reference : session.invoices)
            if (Invoice& it = service.state.invoices.at(reference);
                it.stage != InvoiceStage::finished)
                ++it.polls;
    }
    return session.status;
}

}  // namespace tavrix::sandbox
