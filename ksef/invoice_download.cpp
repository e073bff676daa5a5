#include "ksef/invoice_download.h"

#include "base/error.h"
#include "ksef/exchange.h"
#include "ksef/invoice_download_xml.h"
#include "ksef/json_text.h"
#include "ksef/rows/contractors.h"
#include "ksef/rows/host_setup.h"
#include "ksef/rows/received_invoice.h"
#include "ksef/session_key.h"

namespace tavrix::ksef {
namespace {

using base::Text;
using ports::HttpReply;

constexpr int days_back = 60;

// The places of what is read of an entry of the list. The service adds members behind them.
namespace place {
constexpr std::size_t ksef_number = 0;
constexpr std::size_t number = 1;
constexpr std::size_t issue_date = 2;
constexpr std::size_t storage_date = 5;
constexpr std::size_t seller = 6;
constexpr std::size_t seller_tax_number = 0;
constexpr std::size_t net = 8;
constexpr std::size_t vat = 10;
constexpr std::size_t form_code = 14;
constexpr std::size_t form_value = 2;
constexpr std::size_t hash = 17;
}  // namespace place

[[noreturn]] void refuse(base::TextView what) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm",
                                u"Wpis listy faktur: " + Text(what));
}

JsonPiece at(const std::vector<JsonPiece>& values, std::size_t index) {
    if (index >= values.size()) refuse(u"za mało elementów");
    return values[index];
}

// The day that a text begins with, as "YYYY-MM-DD" with any separators.
base::DateTime day_of(const JsonPiece& piece) {
    Text text = piece.text();
    if (text.size() >= 10) text[4] = text[7] = u'-';
    if (const auto day = base::parse_date_time(text.substr(0, 10))) return *day;
    refuse(u"błędna data " + text);
}

Text with_comma(const JsonPiece& amount) {
    return base::replace_all(amount.text(), u".", u",");
}

class Listing : Exchange {
  public:
    Listing(KsefPorts& ports, Client& client, ports::Database& database, std::int32_t product_group,
            const Text& subject_type)
        : Exchange(ports, client, unknown_after_authentication),
          database_(database),
          invoices_(database),
          contractors_(database),
          setup_(database),
          product_group_(product_group),
          subject_type_(subject_type.empty() ? u"Subject2" : subject_type) {}

    Text run() {
        return outcome_of([&] {
            if (!prepare_key() || !record_all()) return;
            Text fetched = fetch_invoices(ports_, client_, database_, unknown_after_authentication);
            if (!one_failed_) result_ = std::move(fetched);
        });
    }

  private:
    // The list needs no key. One that cannot be made is told here, where hosts have always been
    // told.
    bool prepare_key() {
        SessionKey key;
        Text failure = make_session_key(ports_.crypto, client_, key);
        return failure.empty() || fail(std::move(failure));
    }

    // The local days are given out as days of UTC: the window is wide enough.
    Body query() const {
        const base::DateTime now = ports_.clock.now_local();
        const std::int64_t end = base::days_from_civil(now.year, now.month, now.day) + 1;
        const auto day = [](std::int64_t days) {
            return base::to_utf8(base::format_date(base::civil_from_days(days)));
        };
        Body body;
        body["subjectType"] = base::to_utf8(subject_type_);
        body["dateRange"]["dateType"] = "PermanentStorage";
        body["dateRange"]["from"] = day(end - days_back) + "T00:00:00.0+00:00";
        body["dateRange"]["to"] = day(end) + "T23:59:00.0+00:00";
        return body;
    }

    bool record_all() {
        const Body body = query();
        for (int page = 0;; ++page) {
            const HttpReply reply =
                client_.post("/api/v2/invoices/query/metadata?sortOrder=Desc&pageOffset=" +
                                 std::to_string(page) + "&pageSize=250",
                             body);
            if (!answered(reply, 200)) {
                return fail(failure_text(reply, u"invoices/query/metadata:STATUS:"));
            }
            const auto answer = JsonPiece::document(reply.body.view());
            const auto entries = answer ? answer->member("invoices") : std::nullopt;
            if (!entries || !entries->is_array()) return false;
            const std::vector<JsonPiece> list = entries->values();
            for (const JsonPiece& entry : list) record_alone(entry);
            const auto more = answer->member("hasMore");
            // Behind an empty page there is nothing, whatever it says.
            if (!more || more->text() != u"true" || list.empty()) return true;
        }
    }

    // An entry that cannot be recorded does not keep the next ones from it; the text will tell.
    void record_alone(const JsonPiece& entry) {
        try {
            record(entry);
        } catch (const base::AutomationError&) {
            one_failed_ = true;
        }
    }

    void record(const JsonPiece& entry) {
        ReceivedInvoice invoice = read(entry);
        if (invoices_.has(invoice.ksef_number, invoice.document_kind)) return;
        const auto contractor = contractors_.find(invoice.seller_tax_number);
        if (!contractor && is_on(only_known_sellers_, u"pza060")) return;
        if (contractor && !contractor->exchanges_through_ksef &&
            is_on(only_ksef_sellers_, u"pza059")) {
            return;
        }
        if (contractor) invoice.contractor = contractor->id;
        invoices_.add(invoice, ports_.clock.now_local());
    }

    ReceivedInvoice read(const JsonPiece& entry) const {
        const std::vector<JsonPiece> values = entry.values();
        const bool is_seller = subject_type_ == u"Subject1";
        const bool is_own = is_seller || subject_type_ == u"SubjectAuthorized";
        const bool is_invoice =
            at(at(values, place::form_code).values(), place::form_value).text() == u"FA";
        ReceivedInvoice invoice;
        invoice.ksef_number = at(values, place::ksef_number).text();
        if (invoice.ksef_number.empty()) refuse(u"brak numeru KSeF");
        invoice.number = at(values, place::number).text();
        invoice.issued = day_of(at(values, place::issue_date));
        invoice.stored = day_of(at(values, place::storage_date));
        invoice.seller_tax_number =
            at(at(values, place::seller).values(), place::seller_tax_number).text();
        invoice.net = with_comma(at(values, place::net));
        invoice.vat = with_comma(at(values, place::vat));
        invoice.hash = at(values, place::hash).text();
        invoice.json = base::from_utf8(entry.json());
        invoice.document_kind = is_invoice ? (is_seller ? 10 : 20) : (is_seller ? 13 : 23);
        invoice.direction = is_own ? u"ksef_OWN" : u"ksef_IN";
        invoice.product_group = product_group_;
        return invoice;
    }

    bool is_on(std::optional<bool>& known, base::TextView name) {
        if (!known) known = setup_.is_on(name);
        return *known;
    }

    ports::Database& database_;
    ReceivedInvoices invoices_;
    Contractors contractors_;
    HostSetup setup_;
    std::int32_t product_group_;
    Text subject_type_;
    std::optional<bool> only_known_sellers_;
    std::optional<bool> only_ksef_sellers_;
    bool one_failed_ = false;
};

}  // namespace

Text download_invoices(KsefPorts& ports, Client& client, ports::Database& database,
                       std::int32_t product_group, const Text& subject_type) {
    return Listing(ports, client, database, product_group, subject_type).run();
}

}  // namespace tavrix::ksef
