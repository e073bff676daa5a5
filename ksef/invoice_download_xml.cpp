#include "ksef/invoice_download_xml.h"

#include <algorithm>
#include <array>

#include "base/error.h"
#include "ksef/encoding.h"
#include "ksef/exchange.h"
#include "ksef/rows/approvals.h"
#include "ksef/rows/host_setup.h"
#include "ksef/rows/missing_invoices.h"
#include "ksef/verification_links.h"

namespace tavrix::ksef {
namespace {

using base::Text;
using ports::HttpReply;
using namespace std::chrono_literals;

constexpr auto rate_limit_pause = 1500ms;
// The rate limits that are over in a moment.
constexpr std::array<base::TextView, 2> soon_again = {u"Spróbuj ponownie po 2 sekundach",
                                                      u"Spróbuj ponownie po 1 sekundach"};
// An invoice that does not exist, and one that is not there yet.
constexpr std::array<std::string_view, 2> unavailable = {"21164", "21165"};
constexpr int not_acceptable = 406;

// What ksefniezgodnyidwew tells of the buyer's internal identifier.
namespace identifier {
constexpr std::int64_t as_expected = 0;
constexpr std::int64_t other_than_pza063 = 1;
constexpr std::int64_t other_than_pza065 = 2;
}  // namespace identifier

// The buyer's internal identifier. Where the element has attributes, they and the ">" stay in front
// of it: hosts know it so.
base::TextView internal_identifier(base::TextView xml) {
    constexpr base::TextView plain = u"<IDWew>";
    constexpr base::TextView with_attributes = u"<IDWew ";
    std::size_t begin = xml.find(plain);
    if (begin == base::TextView::npos) begin = xml.find(with_attributes);
    if (begin == base::TextView::npos) return {};
    begin += plain.size();
    const std::size_t end = xml.find(u"</IDWew>", begin);
    return xml.substr(begin, end == base::TextView::npos ? end : end - begin);
}

// The service writes letters as escapes at times.
bool says_soon_again(const HttpReply& reply, const Json& answer) {
    const Text body = base::from_utf8(reply.body.view());
    const Text decoded = answer.is_null() ? Text() : base::from_utf8(answer.dump());
    return std::ranges::any_of(soon_again, [&](base::TextView words) {
        return body.find(words) != Text::npos || decoded.find(words) != Text::npos;
    });
}

bool is_unavailable(const HttpReply& reply, const Json& answer) {
    if (reply.status == not_acceptable) return true;
    const Json& details = json_at(answer, "exception.exceptionDetailList");
    return details.is_array() && std::ranges::any_of(details, [](const Json& detail) {
               const std::string code = utf8_at(detail, "exceptionCode");
               return std::ranges::find(unavailable, code) != unavailable.end();
           });
}

[[noreturn]] void refuse_document() {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm",
                                u"Odpowiedź KSeF nie jest fakturą");
}

class Fetching : Exchange {
  public:
    Fetching(KsefPorts& ports, Client& client, ports::Database& database, base::TextView unknown)
        : Exchange(ports, client, unknown), database_(database) {}

    Text run() {
        return outcome_of([&] {
            HostSetup setup(database_);
            expected_pza063_ = setup.text(u"pza063");
            expected_pza065_ = setup.text(u"pza065");
            MissingInvoices invoices(database_);
            for (; !invoices.at_end(); invoices.move_next()) {
                if (!fetch(invoices)) break;
            }
            if (one_failed_) return;
            result_ = !refusal_.empty() ? refusal_
                                        : u"kod bładu:" + base::to_decimal(client_.last_status);
        });
    }

  private:
    // False when the walk is over.
    bool fetch(MissingInvoices& invoices) {
        client_.renew_time();
        const HttpReply reply = client_.get("/api/v2/invoices/ksef/" +
                                            path_segment(base::to_utf8(invoices.ksef_number())));
        if (!answered(reply, 200)) return goes_on_after(reply);
        try {
            if (!is_the_invoice(reply, invoices.hash())) refuse_document();
            store(invoices, base::from_utf8(reply.body.view()));
        } catch (const base::AutomationError&) {
            one_failed_ = true;
        }
        return true;
    }

    bool goes_on_after(const HttpReply& reply) {
        refusal_ = base::from_utf8(reply.body.view());
        const Json answer = parse_json(reply.body.view());
        if (says_soon_again(reply, answer)) {
            ports_.clock.sleep(rate_limit_pause);
            return true;
        }
        return ports_.settings.skip_unavailable && is_unavailable(reply, answer);
    }

    // A gateway on the way may answer 200 with a page of its own. Where neither the list nor the
    // answer names a hash, anything but nothing is taken.
    bool is_the_invoice(const HttpReply& reply, const Text& listed) const {
        if (reply.body.empty()) return false;
        std::vector<Text> known{listed};
        for (const auto& [name, value] : reply.headers) {
            if (base::equal_case_blind(base::from_utf8(name), u"x-ms-meta-hash")) {
                known.push_back(base::from_utf8(value));
            }
        }
        std::erase_if(known, [](const Text& hash) { return !is_invoice_hash(hash); });
        const Text own =
            base::from_utf8(sha256_base64(ports_.crypto, base::bytes_of(reply.body.view())));
        return known.empty() || std::ranges::find(known, own) != known.end();
    }

    // The document first: an approval that cannot be entered does not cost it. The rows of later
    // calls are those without a document, so nobody would enter it then; hence the second try.
    void store(MissingInvoices& invoices, const Text& xml) {
        const Text found(internal_identifier(xml));
        const ApprovalQuestion question = invoices.store(xml, found, judge(found));
        Approvals approvals(database_);
        try {
            approvals.enter(invoices.id(), question);
        } catch (const base::AutomationError&) {
            approvals.enter(invoices.id(), question);
        }
    }

    std::int64_t judge(const Text& found) const {
        if (!expected_pza063_.empty() && found != expected_pza063_) {
            return identifier::other_than_pza063;
        }
        if (!expected_pza065_.empty() && found != expected_pza065_) {
            return identifier::other_than_pza065;
        }
        return identifier::as_expected;
    }

    ports::Database& database_;
    Text expected_pza063_;
    Text expected_pza065_;
    Text refusal_;
    bool one_failed_ = false;
};

}  // namespace

Text fetch_invoices(KsefPorts& ports, Client& client, ports::Database& database,
                    base::TextView unknown) {
    return Fetching(ports, client, database, unknown).run();
}

}  // namespace tavrix::ksef
