#include "ksef/online_session.h"

#include "base/base64.h"
#include "ksef/encoding.h"
#include "ksef/exchange.h"
#include "ksef/poll_counter.h"
#include "ksef/session_key.h"

namespace tavrix::ksef {
namespace {

using base::Text;
using ports::HttpReply;
using namespace std::chrono_literals;

constexpr std::string_view sessions = "/api/v2/sessions/";
constexpr std::string_view online_sessions = "/api/v2/sessions/online";
constexpr std::u16string_view accepted_prefix = u"Faktura o numerze KSeF: ";
constexpr auto invoice_poll_pause = 2000ms;
// The service has the invoice's own page as soon as the session is done, and the UPO soon after;
// past this many polls it never will.
constexpr int most_invoice_polls = 120;

// What the address of a UPO must not have stored as one: nothing, and the page of a firewall.
bool is_upo(std::string_view body) {
    const std::size_t start = body.find('<');
    if (start == std::string_view::npos) return false;
    const Text beginning = base::from_utf8(body.substr(start, 14));
    return base::find_case_blind(beginning, u"<html") != 0 &&
           base::find_case_blind(beginning, u"<!doctype html") != 0;
}

class OnlineSession : Exchange {
  public:
    OnlineSession(KsefPorts& ports, Client& client, DocumentRow row)
        : Exchange(ports, client, u"Nieznany błąd"), row_(row) {}

    Text run(base::Bytes invoice, const FormCode& form) {
        return outcome_of([&] {
            SessionKey session_key;
            if (prepare(std::move(invoice), session_key) && open_session(form, session_key) &&
                check_session() && look_up_row() && send_invoice() && wait_for_invoice()) {
                record_outcome();
                if (close_and_wait() && fetch_invoice()) fetch_upo();
            }
        });
    }

  private:
    std::string session_path(std::string_view rest = {}) const {
        return std::string(sessions) + path_segment(client_.session_reference) + std::string(rest);
    }
    std::string online_path(std::string_view rest) const {
        return std::string(online_sessions) + "/" + path_segment(client_.session_reference) +
               std::string(rest);
    }

    // Everything of the body that depends on the bytes alone, so that they are held no longer than
    // needed.
    bool prepare(const base::Bytes plain, SessionKey& session_key) {
        if (Text failure = make_session_key(ports_.crypto, client_, session_key);
            !failure.empty()) {
            return fail(std::move(failure));
        }
        const base::Bytes encrypted =
            ports_.crypto.aes_256_cbc_encrypt(session_key.key.view(), session_key.iv, plain);
        invoice_hash_ = sha256_base64(ports_.crypto, plain);
        body_["invoiceHash"] = invoice_hash_;
        body_["invoiceSize"] = std::to_string(plain.size());
        body_["encryptedInvoiceHash"] = sha256_base64(ports_.crypto, encrypted);
        body_["encryptedInvoiceSize"] = std::to_string(encrypted.size());
        body_["encryptedInvoiceContent"] = base::base64_encode(encrypted);
        return true;
    }

    bool open_session(const FormCode& form, const SessionKey& session_key) {
        client_.set_bearer(client_.access_token);
        Body body;
        body["formCode"]["systemCode"] = base::to_utf8(form.system_code);
        body["formCode"]["schemaVersion"] = base::to_utf8(form.schema_version);
        body["formCode"]["value"] = base::to_utf8(form.value);
        body["encryption"] = encryption_of(session_key);
        const HttpReply reply = client_.post(std::string(online_sessions), body);
        if (!answered(reply, 201)) return fail(failure_text(reply, u"sessions/online:STATUS:"));
        client_.session_reference = utf8_at(parse_json(reply.body.view()), "referenceNumber");
        return true;
    }

    bool check_session() {
        const HttpReply reply = client_.get(session_path());
        if (!answered(reply, 200)) return true;
        // Ordered as text: "1000" lies before "300". Any other code goes on, the sending will tell.
        const std::string code = utf8_at(parse_json(reply.body.view()), "status.code");
        if (code == "200" || code >= "300") return fail(failure_text(reply, u"sessions/:STATUS:"));
        return true;
    }

    bool look_up_row() {
        const auto sent = row_.read();
        if (!sent) return fail(u"Nie znaleziono dokumetu:" + row_.name());
        // A document of an earlier day was issued offline; sent once without a number, it is
        // corrected technically.
        const bool issued_earlier =
            sent->issue_date &&
            base::format_date(*sent->issue_date) < base::format_date(ports_.clock.now_local());
        body_["offlineMode"] = issued_earlier;
        if (issued_earlier && sent->ksef_number.empty() && !sent->reference.empty() &&
            !sent->hash.empty()) {
            body_["hashOfCorrectedInvoice"] = base::to_utf8(sent->hash);
        }
        return true;
    }

    bool send_invoice() {
        const HttpReply reply = client_.post_once(online_path("/invoices"), body_);
        body_.clear();
        if (!answered(reply, 202)) return fail(failure_text(reply, u"sessions/online/STATUS:"));
        invoice_reference_ = utf8_at(parse_json(reply.body.view()), "referenceNumber");
        return true;
    }

    bool wait_for_invoice() {
        PollCounter counter;
        for (;;) {
            const HttpReply reply = client_.get(session_path("/invoices"));
            if (!answered(reply, 200)) {
                return fail(u"sessions//invoicesSTATUS:" + base::to_decimal(reply.status));
            }
            invoices_ = parse_json(reply.body.view());
            const std::string code = utf8_at(invoices_, "invoices[0].status.code");
            // 440 is a duplicate: the invoice is in KSeF already and its number comes along.
            if (code == "200" || code == "440") return true;
            if (code != "100" && code != "150") {
                return fail(
                    failure_text(reply, u"invoices[0].status.code:STATUS:", base::from_utf8(code)));
            }
            if (!counter.wait(ports_.clock)) {
                return fail(failure_text(reply, u"invoices[0].status.code:STATUS:", u"timeout"));
            }
        }
    }

    // The text comes last: a number that could not be written must not look like a success. Sent
    // again, the invoice is a duplicate and brings its number back.
    void record_outcome() {
        const Json& invoice = json_at(invoices_, "invoices[0]");
        // The answer to the sending may have been unreadable; the session's list names the invoice
        // too.
        if (invoice_reference_.empty()) invoice_reference_ = utf8_at(invoice, "referenceNumber");
        number_ = text_at(invoice, "status.extensions.originalKsefNumber");
        if (number_.empty() || utf8_at(invoice, "status.code") != "440")
            number_ = text_at(invoice, "ksefNumber");
        row_.record({base::from_utf8(invoice_reference_), number_, base::from_utf8(invoice_hash_),
                     text_at(invoice, "status.description")},
                    ports_.clock.now_local());
        result_ = Text(accepted_prefix) + number_;
    }

    bool close_and_wait() {
        client_.post(online_path("/close"), Body::object());
        PollCounter counter;
        for (;;) {
            const HttpReply reply = client_.get(session_path());
            if (answered(reply, 429)) return fail(u"429 Too many Requests");
            if (answered(reply, 200)) {
                const Json answer = parse_json(reply.body.view());
                const std::string code = utf8_at(answer, "status.code");
                if (const Text failed = text_at(answer, "failedInvoiceCount"); is_count(failed)) {
                    return fail(u"failedInvoiceCount:STATUS:" + failed);
                }
                if (code == "200" || is_count(text_at(answer, "successfulInvoiceCount")))
                    return true;
                const bool in_progress =
                    code == "100" || code == "150" || code == "170" || code.empty();
                if (!in_progress) return false;
            }
            if (!counter.wait(ports_.clock)) return fail(u"sessions:STATUS:timeout");
        }
    }

    static bool is_count(const Text& count) { return !count.empty() && count != u"0"; }

    bool fetch_invoice() {
        const std::string path = session_path("/invoices/") + path_segment(invoice_reference_);
        for (int poll = 1;; ++poll) {
            const HttpReply reply = client_.get(path);
            if (answered(reply, 200) && read_page(parse_json(reply.body.view()))) return true;
            if (poll == most_invoice_polls) return false;
            ports_.clock.sleep(invoice_poll_pause);
        }
    }

    // Whether the UPO can be fetched. An invoice has its number, and with it its page, before that.
    bool read_page(const Json& invoice) {
        const Text number = text_at(invoice, "ksefNumber");
        if (!number.empty() && number != confirmed_number_) {
            row_.record_number(number, ports_.clock.now_local());
            number_ = confirmed_number_ = number;
            result_ = Text(accepted_prefix) + number_;
        }
        upo_url_ = utf8_at(invoice, "upoDownloadUrl");
        return !upo_url_.empty();
    }

    void fetch_upo() {
        const HttpReply reply = client_.get_address(upo_url_);
        if (!answered(reply, 200) || !is_upo(reply.body.view())) return;
        row_.record_upo(base::from_utf8(reply.body.view()), ports_.clock.now_local());
        if (!number_.empty()) result_.clear();
    }

    DocumentRow row_;
    Body body_ = Body::object();
    std::string invoice_hash_;
    std::string invoice_reference_;
    Text number_;            // what the service called the invoice, empty as long as it did not
    Text confirmed_number_;  // the same on the invoice's own page, as recorded
    Json invoices_;
    std::string upo_url_;
};

}  // namespace

Text send_in_online_session(KsefPorts& ports, Client& client, DocumentRow row, base::Bytes invoice,
                            const FormCode& form) {
    return OnlineSession(ports, client, row).run(std::move(invoice), form);
}

}  // namespace tavrix::ksef
