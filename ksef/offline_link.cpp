#include "ksef/offline_link.h"

#include <charconv>

#include "base/error.h"
#include "ksef/authentication.h"
#include "ksef/exchange.h"
#include "ksef/rows/document_row.h"
#include "ksef/rows/user_setting.h"
#include "ksef/verification_links.h"

namespace tavrix::ksef {
namespace {

using base::Text;
using base::TextView;

// Offline links belong to real invoices.
constexpr std::int32_t production = 1;
constexpr TextView key_setting = u"usp607";
constexpr TextView pass_phrase_setting = u"usp608";
constexpr TextView certificate_type = u"Offline";

[[noreturn]] void refuse_table_argument() {
    throw base::AutomationError(base::ErrorNumber::subscript, u"KseF_comm",
                                u"Tablica to nazwa, token i numer, rozdzielone przecinkami");
}

TextView needed_piece(const base::SecretText& table_argument, std::size_t index) {
    const auto piece = piece_of(table_argument, index);
    if (!piece) refuse_table_argument();
    return *piece;
}

std::int32_t number_of(TextView piece) {
    const std::string digits = base::to_utf8(base::trim(piece));
    const char* const end = digits.data() + digits.size();
    std::int32_t number = 0;
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    if (error != std::errc() || stop != end) refuse_table_argument();
    return number;
}

class OfflineLink : Exchange {
  public:
    OfflineLink(KsefPorts& ports, Client& client, ports::Database& database,
                const OfflineDocument& document)
        : Exchange(ports, client, u""), database_(database), document_(document) {}

    Text run() {
        return outcome_of([&] {
            if (!check_arguments()) return;
            read_table_argument();
            DocumentRow row(database_, table_, document_.id);
            const auto hash = row.read_hash();
            // A link to no invoice would be signed all the same.
            if (!hash || !is_invoice_hash(*hash)) return;
            if (!authenticate_company()) return;
            build_link(*hash);
            if (find_key() && certificate_is_for_offline() && sign()) store(row);
        });
    }

  private:
    bool check_arguments() {
        const auto missing = [&](TextView what) {
            return fail(u"Brak " + Text(what) + u" - (GetQr2)wysyłka OFFLINE");
        };
        if (document_.certificate_serial.empty()) return missing(u"numeru certyfikatu pracownika");
        if (document_.table_argument.empty()) return missing(u"tokenu");
        if (document_.id == 0) return missing(u"id dokumentu");
        if (document_.tax_number.empty()) return missing(u"nip");
        return true;
    }

    void read_table_argument() {
        table_ = needed_piece(document_.table_argument, 0);
        token_ = base::SecretText(needed_piece(document_.table_argument, 1));
        user_ = number_of(needed_piece(document_.table_argument, 2));
    }

    bool authenticate_company() {
        client_.begin_call(production);
        const Text failure = authenticate(ports_, client_, document_.tax_number, token_);
        return failure.empty() || fail(u"Błąd inicjalizacji sesji KSeF:" + failure);
    }

    void build_link(TextView hash) {
        const Settings& settings = ports_.settings;
        link_ = unsigned_link(
            {settings.qr.production, tax_number_context(settings.certificate_signature),
             document_.tax_number, document_.tax_number, document_.certificate_serial, hash});
    }

    bool find_key() {
        const base::SecretUtf8 pem = user_setting(database_, key_setting, user_);
        if (pem.empty()) {
            return fail(u"err:Brak klucza prywatnego (" + Text(key_setting) + u") użytkownika " +
                        base::to_decimal(user_));
        }
        LinkKey read =
            read_link_key(ports_.crypto, pem, user_setting(database_, pass_phrase_setting, user_));
        if (!read.key) return fail(std::move(read.failure));
        key_ = std::move(read.key);
        return true;
    }

    // The service is asked, but not needed: it may be out of reach, and refuses the question to
    // those who came with a token.
    bool certificate_is_for_offline() {
        const std::string serial = base::to_utf8(document_.certificate_serial);
        const std::string type = base::to_utf8(certificate_type);
        Body filter;
        filter["certificateSerialNumber"] = serial;
        filter["type"] = type;
        const ports::HttpReply reply = client_.post("/api/v2/certificates/query", filter);
        if (!answered(reply, 200)) return true;
        const Json answer = parse_json(reply.body.view());
        const Json& certificates = json_at(answer, "certificates");
        if (!certificates.is_array()) return true;
        for (const Json& certificate : certificates) {
            if (base::equal_case_blind(text_at(certificate, "certificateSerialNumber"),
                                       document_.certificate_serial) &&
                utf8_at(certificate, "type") == type) {
                // One that was revoked or has expired proves nothing any more.
                const std::string status = utf8_at(certificate, "status");
                if (status.empty() || status == "Active") return true;
            }
        }
        return fail(u"err:Brak cert " + document_.certificate_serial + u" typ " +
                    Text(certificate_type));
    }

    bool sign() {
        if (key_->curve().empty()) return fail(u"Brak EC prywatnego klucza");
        try {
            link_ = with_signature(link_, sign_link(ports_.crypto, *key_, link_),
                                   ports_.settings.certificate_signature);
        } catch (const base::AutomationError& error) {
            return fail(u"ECDSA: " + error.description());
        }
        return true;
    }

    void store(DocumentRow& row) {
        try {
            row.record_certificate_link(link_, ports_.clock.now_local());
        } catch (const base::AutomationError& error) {
            result_ = u"err:" + error.description();
            return;
        }
        result_ = std::move(link_);
    }

    ports::Database& database_;
    const OfflineDocument& document_;
    Text table_;
    base::SecretText token_;
    std::int32_t user_ = 0;
    Text link_;
    std::unique_ptr<ports::PrivateKey> key_;
};

}  // namespace

std::optional<TextView> piece_of(const base::SecretText& table_argument, std::size_t index) {
    TextView rest = table_argument.view();
    for (; index > 0; --index) {
        const std::size_t comma = rest.find(u',');
        if (comma == TextView::npos) return std::nullopt;
        rest.remove_prefix(comma + 1);
    }
    return rest.substr(0, rest.find(u','));
}

Text make_certificate_link(KsefPorts& ports, Client& client, ports::Database& database,
                           const OfflineDocument& document) {
    return OfflineLink(ports, client, database, document).run();
}

}  // namespace tavrix::ksef
