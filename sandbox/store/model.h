// What the sandbox remembers. Plain values: the rules live in the files named after the operations.
#pragma once

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "sandbox/basics/clock.h"
#include "sandbox/basics/json.h"

namespace tavrix::sandbox {

/// A status as the answers carry it.
struct Status {
    int code = 0;
    std::string description;
    std::vector<std::string> details;
    /// Extensions of a duplicate: name to value.
    std::vector<std::pair<std::string, std::string>> extensions;
};

/// In whose name a client works: `Nip` with a tax number or `InternalId` with `NIP-nnnnn`.
struct Context {
    std::string type;
    std::string value;

    std::string nip() const { return value.substr(0, 10); }
    bool operator==(const Context&) const = default;
};

/// A KSeF token made through /tokens or named on the command line. Only its hash is kept.
struct KsefToken {
    std::string reference;
    std::string hash;
    Context context;
    std::string description;
    std::vector<std::string> permissions;
    Instant created;
    std::optional<Instant> last_used;
    bool revoked = false;
};

/// A KSeF certificate of a company, as somebody told the sandbox.
struct Certificate {
    /// 16 upper-case hexadecimal digits.
    std::string serial;
    std::string name;
    /// `Authentication` or `Offline`.
    std::string type;
    std::string common_name;
    std::string nip;
    Instant valid_from;
    Instant valid_to;
    Instant requested;
    bool revoked = false;
};

/// The first and the last IPv4 address of a range.
using IpRange = std::pair<std::uint32_t, std::uint32_t>;
using IpRanges = std::vector<IpRange>;

/// One authentication, from the token request until its refresh token dies.
struct Authentication {
    std::string reference;
    Context context;
    std::string token_reference;
    std::string token_hash;
    std::vector<std::string> permissions;
    /// From where its access tokens may be used; empty when from everywhere.
    IpRanges allowed_ips;
    Instant started;
    /// What the status will be once the waiting is over.
    Status outcome;
    int polls = 0;
    bool finished = false;
    bool redeemed = false;
    bool revoked = false;
    std::optional<Instant> last_refresh;
    std::optional<Instant> refresh_valid_until;
};

struct FormCode {
    std::string system_code;
    std::string schema_version;
    std::string value;
    bool operator==(const FormCode&) const = default;
};

enum class SessionKind { online, batch };
enum class SessionStage { open, closed, finished };

struct PackagePart {
    std::int64_t size = 0;
    std::string hash;
};

/// What a batch session was told about its archive of invoices, and what became of it.
struct Package {
    std::int64_t size = 0;
    std::string hash;
    /// `Zip` or `TarGz`.
    std::string compression;
    /// Encrypted; part 1 first.
    std::vector<PackagePart> parts;
    bool offline_declared = false;
    Instant upload_until;
    /// True once every invoice in it is one of the session's, or none will ever be.
    bool unpacked = false;
    /// Why none ever will be; a code of 0 when nothing is wrong.
    Status failure;
};

struct Session {
    std::string reference;
    SessionKind kind = SessionKind::online;
    Context context;
    std::string authentication_reference;
    FormCode form_code;
    /// Both in Base64; no key when it could not be decrypted.
    std::string symmetric_key;
    std::string initialization_vector;
    Instant created;
    Instant updated;
    Instant valid_until;
    std::optional<Instant> closed;
    SessionStage stage = SessionStage::open;
    Status status;
    int polls = 0;
    /// Of a batch session only.
    std::optional<Package> package;
    std::string upo_reference;
    std::string upo;
    /// References of its invoices in the order they came.
    std::vector<std::string> invoices;
    int successful = 0;
    int failed = 0;

    /// Counts an invoice that is finished.
    void count(const Status& outcome) { ++(outcome.code == 200 ? successful : failed); }
};

/// A party of an invoice as the metadata name it.
struct Party {
    std::string identifier_type;
    std::string identifier;
    std::string name;
    int role = 0;
};

/// What the metadata and the duplicate check need of an invoice's XML.
struct InvoiceSummary {
    std::string invoice_number;
    std::string issue_date;
    std::string kind;
    std::string currency;
    Party seller;
    Party buyer;
    std::vector<Party> third_parties;
    std::optional<Party> authorized;
    double net_amount = 0;
    double gross_amount = 0;
    double vat_amount = 0;
    bool self_invoicing = false;
    bool has_attachment = false;
};

enum class InvoiceStage { accepted, processing, finished };

struct Invoice {
    std::string reference;
    std::string session_reference;
    int ordinal = 0;
    /// Name in the package; empty when it came alone.
    std::string file_name;
    std::string invoice_hash;
    std::int64_t invoice_size = 0;
    bool offline_declared = false;
    std::string hash_of_corrected;
    Instant received;
    InvoiceStage stage = InvoiceStage::accepted;
    Instant stage_since;
    int polls = 0;
    Status status;
    std::optional<InvoiceSummary> summary;
    bool offline = false;
    std::string ksef_number;
    Instant acquired;
    /// When it reached the repository: always later than `acquired`, also as texts of few digits.
    Instant stored;
    /// Encrypted until it is processed, then empty.
    std::string encrypted;
    /// The decrypted document, also of a rejected invoice; empty when it could not be decrypted or
    /// was too large to be looked at.
    std::string xml;
    std::string upo;
};

/// Everything, with the indexes the operations look things up by.
struct State {
    std::unordered_map<std::string, Authentication> authentications;
    std::unordered_map<std::string, Session> sessions;
    std::unordered_map<std::string, Invoice> invoices;
    std::map<std::string, KsefToken> tokens;
    /// By serial number.
    std::map<std::string, Certificate> certificates;
    /// In the order of creation, oldest first.
    std::vector<std::string> authentication_order;
    std::vector<std::string> session_order;
    std::vector<std::string> invoice_order;
    /// Challenge to the moment it was made; used once, dropped when stale.
    std::unordered_map<std::string, Instant> challenges;
    /// Hash of a metadata query to the moment its pages are complete to; dropped when there are
    /// many.
    std::unordered_map<std::string, Instant> query_marks;
    std::unordered_map<std::string, std::string> invoice_by_ksef_number;
    /// Seller, kind and number of every accepted invoice, to its reference.
    std::unordered_map<std::string, std::string> invoice_by_identity;
    std::unordered_multimap<std::string, std::string> invoices_by_hash;
    /// Hash of a rejected invoice to the technical corrections sent for it.
    std::unordered_multimap<std::string, std::string> corrections_by_hash;
    /// What still has to happen, oldest first; entries already dealt with may linger behind the
    /// first.
    std::deque<std::string> pending_invoices;
    std::deque<std::string> open_sessions;
    std::vector<std::string> closing_sessions;

    Authentication& add(Authentication authentication);
    Session& add(Session session);
    /// Also enters the invoice into the indexes as far as it has got.
    Invoice& add(Invoice invoice);
    /// Enters an accepted invoice under its KSeF number and its identity.
    void index_accepted(const Invoice& invoice);
    /// The accepted invoice of a KSeF number, null when there is none.
    const Invoice* accepted(const std::string& ksef_number) const;
};

/// What makes an invoice the only one of its kind: seller, kind and number.
std::string identity_of(const InvoiceSummary& summary);

/// True when a company is party to an invoice in any part.
bool concerns(const InvoiceSummary& summary, const std::string& nip);

/// `Online` or `Offline`, as answers and confirmations name how an invoice came.
const char* mode_name(const Invoice& invoice);

// As answers carry them.
void to_json(Json& json, const Status& status);
void to_json(Json& json, const Context& context);
void to_json(Json& json, const FormCode& form);

/// The value of a key in a map, null when there is none.
template <typename Map>
auto* look_up(Map& map, const std::string& key) {
    const auto found = map.find(key);
    return found == map.end() ? nullptr : &found->second;
}

}  // namespace tavrix::sandbox
