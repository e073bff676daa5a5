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

// A page that is too long to be read is asked for again with half as many entries; the service
// gives out no shorter ones than the smallest.
constexpr int largest_page = 1000;
constexpr int smallest_page = 10;
// So many requests in a row without an answer, and the service is taken for gone.
constexpr int most_unanswered = 3;

// Codes of a session and of an invoice in it; what failed has this one or a higher one.
constexpr int lowest_failure = 400;
constexpr int session_cancelled = 440;
constexpr int invoice_accepted = 200;
constexpr int invoice_duplicate = 440;

struct ListedInvoice {
    Text hash;
    std::string file;
    Text number;
    Text reference;
    Text ksef_number;
};

[[noreturn]] void give_up(Text what) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm", std::move(what));
}

int code_of(const Json& entry) {
    const Json& code = json_at(entry, "status.code");
    return code.is_number_integer() ? code.get<int>() : 0;
}

std::string whose(const Client& client, const TokenCheck& token, ports::Database& database) {
    return base::to_utf8(client.base_url + u' ' + token.tax_number + u' ' + token.reference + u' ' +
                         database.name());
}

PackageDocument document_of(const ManifestEntry& entry) {
    return {entry.table, base::to_decimal(entry.ddout_id)};
}

class ByName {
  public:
    ByName(KsefPorts& ports, Client& client, ports::Database& database, const TokenCheck& token,
           const std::function<Text()>& log_in)
        : ports_(ports),
          client_(client),
          log_in_(log_in),
          documents_(database),
          memory_(ports, whose(client, token, database)) {}

    Text run() {
        client_.honour_retry_after();
        if (!list_sessions()) return failure_;
        std::vector<std::string> references;
        for (const FinishedSession& session : sessions_) references.push_back(session.reference);
        noted_ = noted_of(ports_, references);
        for (const FinishedSession& session : sessions_) {
            const Progress progress = reconcile(session);
            if (progress == Progress::stopped) break;
            // What was noted and cannot be read would be missed for good.
            if (!noted_.is_whole) continue;
            progress == Progress::done ? memory_.done(session) : memory_.left_out(session);
        }
        if (!noted_.is_whole) failure_ = unknown_reconciliation_failure;
        memory_.keep();
        return failure_;
    }

  private:
    enum class Progress { done, left_out, stopped };
    enum class Walk { whole, refused, too_long };

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
        unanswered_ = reply.completed ? 0 : unanswered_ + 1;
        if (!reply.completed) give_up(u"KSeF nie odpowiedział: " + base::from_utf8(reply.error));
        if (reply.status != 200) failure_ = failure_text(reply, u"sessions:STATUS:");
        return reply;
    }

    // Calls `visit` with each element of the list `name` on all pages, with some of them again when
    // a page was too long. False when a page was refused.
    template <typename Visit>
    bool for_each(const std::string& path, const std::string& filter, const char* name,
                  Visit visit) {
        for (int size = largest_page;; size = std::max(size / 2, smallest_page)) {
            const Walk walked =
                walk(path + "?pageSize=" + std::to_string(size) + filter, name, visit);
            if (walked != Walk::too_long) return walked == Walk::whole;
            if (size == smallest_page) give_up(u"Odpowiedź KSeF jest za długa");
        }
    }

    template <typename Visit>
    Walk walk(const std::string& path, const char* name, Visit visit) {
        std::set<std::string> tokens;
        for (std::string token;;) {
            HttpReply reply = ask(path, token);
            refused_with_ = reply.status;
            if (!answered(reply, 200)) return Walk::refused;
            if (!may_be_parsed(reply.body.view())) return Walk::too_long;
            const Json page = parse_json(reply.body.view());
            const Json& list = json_at(page, name);
            if (!list.is_array()) give_up(u"Brak listy w odpowiedzi KSeF");
            for (const Json& element : list) visit(element);
            token = utf8_at(page, "continuationToken");
            // A token that comes back leads round in a circle.
            if (token.empty() || !tokens.insert(token).second) return Walk::whole;
        }
    }

    bool list_sessions() {
        std::string filter =
            "&sessionType=Batch&statuses=Succeeded&statuses=Failed&statuses=Cancelled";
        if (const std::string from = memory_.changed_from(); !from.empty()) {
            filter += "&dateModifiedFrom=" + path_segment(from);
        }
        std::set<std::string> listed;
        const bool is_whole =
            for_each("/api/v2/sessions", filter, "sessions", [&](const Json& entry) {
                FinishedSession session{utf8_at(entry, "referenceNumber"), code_of(entry),
                                        utf8_at(entry, "dateUpdated")};
                if (session.reference.empty() || !listed.insert(session.reference).second) return;
                if (!memory_.is_done(session)) sessions_.push_back(std::move(session));
            });
        std::ranges::stable_sort(sessions_, {}, &FinishedSession::changed);
        // Those behind all others: whoever refuses them every time costs these nothing.
        for (const auto& [reference, session] : memory_.left_out()) {
            if (!listed.contains(reference)) sessions_.push_back(session);
        }
        return is_whole;
    }

    Progress reconcile(const FinishedSession& session) {
        files_.clear();
        for (const NotedInvoice& invoice : noted_.by_session[session.reference]) {
            // Of some files nobody could say which document they were made of.
            if (!invoice.entry.table.empty()) files_[invoice.entry.file] = &invoice.entry;
        }
        is_left_out_ = false;
        bool is_answered = false;
        alone([&] {
            is_answered =
                for_each("/api/v2/sessions/" + path_segment(session.reference) + "/invoices", "",
                         "invoices", [&](const Json& entry) { alone([&] { record(entry); }); });
            // The service wants no more requests.
            is_stopped_ = !is_answered && (refused_with_ == 401 || refused_with_ == 429);
        });
        if (is_stopped_ || unanswered_ >= most_unanswered) return Progress::stopped;
        if (!is_answered) return Progress::left_out;
        if (session.code >= lowest_failure) alone([&] { mark_noted(session); });
        return is_left_out_ ? Progress::left_out : Progress::done;
    }

    // What fails does not keep the next ones from theirs.
    template <typename Write>
    void alone(Write write) {
        try {
            write();
        } catch (const base::AutomationError&) {
            failure_ = unknown_reconciliation_failure;
            is_left_out_ = true;
        }
    }

    void record(const Json& entry) {
        const int code = code_of(entry);
        Text ksef_number;
        if (code == invoice_accepted) ksef_number = text_at(entry, "ksefNumber");
        if (code == invoice_duplicate) {
            ksef_number = text_at(entry, "status.extensions.originalKsefNumber");
        }
        const bool is_accepted = code == invoice_accepted || code == invoice_duplicate;
        if (is_accepted && ksef_number.empty()) give_up(u"Brak numeru KSeF przyjętej faktury");
        if (!is_accepted && code < lowest_failure) {
            // Nothing was decided yet.
            is_left_out_ = true;
            return;
        }
        const ListedInvoice invoice{
            text_at(entry, "invoiceHash"), utf8_at(entry, "invoiceFileName"),
            text_at(entry, "invoiceNumber"), text_at(entry, "referenceNumber"), ksef_number};
        if (const auto document = find(invoice)) {
            documents_.record(*document, ksef_number,
                              is_accepted ? package_accepted : package_failed,
                              ports_.clock.now_local());
        }
    }

    std::optional<PackageDocument> find(const ListedInvoice& invoice) {
        if (auto found = documents_.find_by_hash(invoice.hash, invoice.reference)) return found;
        if (const auto noted = files_.find(invoice.file); noted != files_.end()) {
            return document_of(*noted->second);
        }
        return documents_.find_by_number(invoice.number, invoice.reference, invoice.hash,
                                         invoice.ksef_number);
    }

    // A package that failed lists few of its invoices, or none.
    void mark_noted(const FinishedSession& session) {
        const bool is_cancelled = session.code == session_cancelled;
        for (const NotedInvoice& invoice : noted_.by_session[session.reference]) {
            // Of the later package's outcome this one knows nothing.
            if (invoice.was_sent_again) continue;
            documents_.record(document_of(invoice.entry), {},
                              is_cancelled ? package_cancelled : package_failed,
                              ports_.clock.now_local());
        }
    }

    KsefPorts& ports_;
    Client& client_;
    const std::function<Text()>& log_in_;
    PackageDocuments documents_;
    ReconciliationMemory memory_;
    std::vector<FinishedSession> sessions_;
    NotedPackages noted_;
    std::map<std::string, const ManifestEntry*> files_;  // of the session, by their names in it
    Text failure_;
    int refused_with_ = 0;
    int unanswered_ = 0;        // requests in a row
    bool is_left_out_ = false;  // something of the session
    bool is_stopped_ = false;
};

}  // namespace

Text reconcile_by_name(KsefPorts& ports, Client& client, ports::Database& database,
                       const TokenCheck& token, const std::function<Text()>& log_in) {
    return ByName(ports, client, database, token, log_in).run();
}

}  // namespace tavrix::ksef
