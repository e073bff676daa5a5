#include "ksef/reconciliation.h"

#include "base/error.h"
#include "ksef/json_text.h"
#include "ksef/rows/package_documents.h"

namespace tavrix::ksef {
namespace {

using base::Text;
using ports::HttpReply;

struct Pass {
    std::string_view status_filter;
    PackageOutcome outcome;
    bool has_ksef_numbers;
};

constexpr Pass passes[] = {
    {"Succeeded", package_accepted, true},
    {"Failed", package_failed, false},
    {"Cancelled", package_cancelled, false},
};

// The places of what is read of a session and of one of its invoices.
namespace position {
constexpr std::size_t session_reference = 0;
constexpr std::size_t document_number = 1;
constexpr std::size_t invoice_reference = 1;
constexpr std::size_t ksef_number = 2;
}  // namespace position

[[noreturn]] void fail(base::TextView what) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm", Text(what));
}

void require_answer(const HttpReply& reply) {
    if (!reply.completed) fail(u"KSeF nie odpowiedział: " + base::from_utf8(reply.error));
}

std::vector<JsonPiece> list_in(const JsonPiece& answer, std::string_view name) {
    const auto list = answer.member(name);
    if (!list || !list->is_array()) fail(u"Brak listy w odpowiedzi KSeF");
    return list->values();
}

JsonPiece document_of(const HttpReply& reply) {
    const auto document = JsonPiece::document(reply.body.view());
    if (!document) fail(u"Odpowiedź KSeF nie jest dokumentem JSON");
    return *document;
}

bool has(const std::vector<JsonPiece>& entry, std::size_t place) {
    return place < entry.size() && !entry[place].is_null();
}

class Reconciliation {
  public:
    Reconciliation(KsefPorts& ports, Client& client, ports::Database& database)
        : ports_(ports), client_(client), documents_(database) {}

    void run(const Pass& pass) {
        const std::string path = "/api/v2/sessions?pageSize=1000&sessionType=Batch&statuses=" +
                                 std::string(pass.status_filter);
        std::string token;
        for (HttpReply page = list(path);;) {
            const JsonPiece answer = document_of(page);
            for (const JsonPiece& session : list_in(answer, "sessions")) {
                reconcile_session(session.values(), pass);
            }
            const auto next = answer.member("continuationToken");
            const std::string next_token = next ? next->utf8() : "";
            if (next_token.empty()) return;
            HttpReply next_page = list(path + "&x-continuation-token=" + next_token);
            // The same answer to the same request: the service does not look at the token, and the
            // list would never end.
            if (next_token == token && next_page.body.view() == page.body.view()) return;
            token = next_token;
            page = std::move(next_page);
        }
    }

  private:
    // Nothing but the service's answer ends the asking, and nothing is waited for in between; hosts
    // count on that, and end their process where they want no more.
    HttpReply list(const std::string& path) {
        for (;;) {
            client_.renew_time();
            HttpReply reply = client_.get(path);
            require_answer(reply);
            if (reply.status == 200) return reply;
        }
    }

    // Only the first invoice that is found is written.
    void reconcile_session(const std::vector<JsonPiece>& session, const Pass& pass) {
        if (!has(session, position::document_number)) return;
        client_.renew_time();
        const HttpReply reply =
            client_.get("/api/v2/sessions/" +
                        path_segment(session[position::session_reference].utf8()) + "/invoices");
        require_answer(reply);
        if (reply.status != 200) return;
        for (const JsonPiece& entry : list_in(document_of(reply), "invoices")) {
            const std::vector<JsonPiece> invoice = entry.values();
            // A member that is missing must not find the documents that have nothing there.
            if (!has(invoice,
                     pass.has_ksef_numbers ? position::ksef_number : position::invoice_reference))
                continue;
            const Text number =
                pass.has_ksef_numbers ? invoice[position::ksef_number].text() : Text();
            if (documents_.record(session[position::document_number].text(),
                                  invoice[position::invoice_reference].text(), number, pass.outcome,
                                  ports_.clock.now_local())) {
                return;
            }
        }
    }

    KsefPorts& ports_;
    Client& client_;
    PackageDocuments documents_;
};

}  // namespace

void reconcile_by_position(KsefPorts& ports, Client& client, ports::Database& database) {
    Reconciliation reconciliation(ports, client, database);
    for (const Pass& pass : passes) reconciliation.run(pass);
}

}  // namespace tavrix::ksef
