#include "ksef/reconciliation_by_name.h"

#include <algorithm>
#include <set>

#include "base/error.h"
#include "ksef/reconciliation.h"
#include "ksef/reconciliation_memory.h"
#include "ksef/rows/package_documents.h"

namespace tavrix::ksef {
namespace {

using base::Text;
using ports::HttpReply;

constexpr std::string_view page_size = "pageSize=1000";

// Codes of a session and of an invoice in it.
constexpr std::string_view session_succeeded = "200";
constexpr std::string_view session_cancelled = "440";
constexpr std::string_view invoice_accepted = "200";
constexpr std::string_view invoice_duplicate = "440";
constexpr std::string_view invoice_in_progress[] = {"100", "150"};

struct Session {
    std::string reference;
    std::string code;
    std::string changed;
};

struct ListedInvoice {
    Text hash;
    std::string file;
    Text number;
    Text reference;
};

[[noreturn]] void fail(Text what) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm", std::move(what));
}

PackageDocument document_of(const ManifestEntry& entry) {
    return {entry.table, base::to_decimal(entry.ddout_id)};
}

class ByName {
  public:
    ByName(KsefPorts& ports, Client& client, ports::Database& database, const Text& tax_number,
           const std::function<Text()>& log_in)
        : ports_(ports),
          client_(client),
          log_in_(log_in),
          documents_(database),
          memory_(ports, client, tax_number) {}

    Text run() {
        client_.honour_retry_after();
        if (!list_sessions()) return failure_;
        std::vector<std::string> references;
        for (const Session& session : sessions_) references.push_back(session.reference);
        noted_ = noted_of(ports_, references);
        for (const Session& session : sessions_) {
            if (!reconcile(session)) break;
        }
        if (failure_.empty()) memory_.keep();
        return failure_;
    }

  private:
    // One new login where the token has run out; the failure's text stays behind when the answer is
    // none.
    HttpReply ask(const std::string& path, const std::string& token) {
        std::vector<ports::HttpHeader> headers;
        if (!token.empty()) headers.push_back({"x-continuation-token", token});
        client_.renew_time();
        HttpReply reply = client_.get(path, headers);
        if (answered(reply, 401)) {
            if (Text refused = log_in_(); !refused.empty()) {
                failure_ = std::move(refused);
                return reply;
            }
            client_.honour_retry_after();
            reply = client_.get(path, headers);
        }
        if (!reply.completed) fail(u"KSeF nie odpowiedział: " + base::from_utf8(reply.error));
        if (reply.status != 200) failure_ = failure_text(reply, u"sessions:STATUS:");
        return reply;
    }

    // Calls `visit` with each element of the list `name` on all pages. False when a page was
    // refused.
    template <typename Visit>
    bool for_each(const std::string& path, const char* name, Visit visit) {
        std::set<std::string> tokens;
        for (std::string token;;) {
            HttpReply reply = ask(path, token);
            refused_with_ = reply.status;
            if (!answered(reply, 200)) return false;
            const Json page = parse_json(reply.body.view());
            const Json& list = json_at(page, name);
            if (!list.is_array()) fail(u"Brak listy w odpowiedzi KSeF");
            for (const Json& element : list) visit(element);
            token = utf8_at(page, "continuationToken");
            // A token that comes back leads round in a circle.
            if (token.empty() || !tokens.insert(token).second) return true;
        }
    }

    bool list_sessions() {
        std::string path = "/api/v2/sessions?" + std::string(page_size) +
                           "&sessionType=Batch&statuses=Succeeded&statuses=Failed"
                           "&statuses=Cancelled";
        if (const std::string from = memory_.changed_from(); !from.empty()) {
            path += "&dateModifiedFrom=" + path_segment(from);
        }
        return for_each(path, "sessions", [&](const Json& entry) {
            Session session{utf8_at(entry, "referenceNumber"), utf8_at(entry, "status.code"),
                            utf8_at(entry, "dateUpdated")};
            memory_.saw(session.changed);
            if (!session.reference.empty()) sessions_.push_back(std::move(session));
        });
    }

    // False when the service wants no more requests.
    bool reconcile(const Session& session) {
        files_.clear();
        for (const ManifestEntry& entry : noted_[session.reference]) {
            // Of some files nobody could say which document they were made of.
            if (!entry.table.empty()) files_[entry.file] = &entry;
        }
        const bool is_complete =
            for_each("/api/v2/sessions/" + path_segment(session.reference) + "/invoices?" +
                         std::string(page_size),
                     "invoices", [&](const Json& entry) { alone([&] { record(entry); }); });
        if (!is_complete) return refused_with_ != 401 && refused_with_ != 429;
        if (session.code != session_succeeded) alone([&] { mark_noted(session); });
        return true;
    }

    // An invoice that cannot be written does not keep the next ones from it.
    template <typename Write>
    void alone(Write write) {
        try {
            write();
        } catch (const base::AutomationError&) {
            failure_ = unknown_reconciliation_failure;
        }
    }

    void record(const Json& entry) {
        const std::string code = utf8_at(entry, "status.code");
        if (std::ranges::find(invoice_in_progress, code) != std::end(invoice_in_progress)) return;
        Text ksef_number;
        if (code == invoice_accepted) ksef_number = text_at(entry, "ksefNumber");
        if (code == invoice_duplicate) {
            ksef_number = text_at(entry, "status.extensions.originalKsefNumber");
        }
        const ListedInvoice invoice{
            text_at(entry, "invoiceHash"), utf8_at(entry, "invoiceFileName"),
            text_at(entry, "invoiceNumber"), text_at(entry, "referenceNumber")};
        if (const auto document = find(invoice)) {
            documents_.record(*document, ksef_number,
                              ksef_number.empty() ? package_failed : package_accepted,
                              ports_.clock.now_local());
        }
    }

    std::optional<PackageDocument> find(const ListedInvoice& invoice) {
        if (auto found = documents_.find_by_hash(invoice.hash, invoice.reference)) return found;
        if (const auto noted = files_.find(invoice.file); noted != files_.end()) {
            return document_of(*noted->second);
        }
        return documents_.find_by_number(invoice.number, invoice.reference);
    }

    // A package that failed lists few of its invoices, or none.
    void mark_noted(const Session& session) {
        const bool is_cancelled = session.code == session_cancelled;
        for (const ManifestEntry& entry : noted_[session.reference]) {
            documents_.record(document_of(entry), {},
                              is_cancelled ? package_cancelled : package_failed,
                              ports_.clock.now_local());
        }
    }

    KsefPorts& ports_;
    Client& client_;
    const std::function<Text()>& log_in_;
    PackageDocuments documents_;
    ReconciliationMemory memory_;
    std::vector<Session> sessions_;
    std::map<std::string, std::vector<ManifestEntry>> noted_;
    std::map<std::string, const ManifestEntry*> files_;  // of the session, by their names in it
    Text failure_;
    int refused_with_ = 0;
};

}  // namespace

Text reconcile_by_name(KsefPorts& ports, Client& client, ports::Database& database,
                       const Text& tax_number, const std::function<Text()>& log_in) {
    return ByName(ports, client, database, tax_number, log_in).run();
}

}  // namespace tavrix::ksef
