#include "ksef/ksef_comm.h"

#include "base/error.h"
#include "ksef/authentication.h"
#include "ksef/batch_parts.h"
#include "ksef/batch_session.h"
#include "ksef/client.h"
#include "ksef/encoding.h"
#include "ksef/invoice_documents.h"
#include "ksef/invoice_download.h"
#include "ksef/invoice_download_xml.h"
#include "ksef/offline_link.h"
#include "ksef/online_session.h"
#include "ksef/reconciliation.h"
#include "ksef/reconciliation_by_name.h"
#include "ksef/split_file.h"
#include "ksef/token.h"
#include "ksef/token_request.h"

namespace tavrix::ksef {

using base::Bytes;
using base::Text;

namespace {

// What is wrong with the settings file; the empty text when it can be taken as it stands.
Text settings_failure(const KsefPorts& ports) {
    try {
        if (ports.read_settings) ports.read_settings();
        return {};
    } catch (const base::AutomationError& error) {
        return error.description();
    }
}

// What cannot be opened goes the way of the small ones, which says so.
bool is_for_parts(KsefPorts& ports, const Text& path) {
    try {
        return ports.settings.batch_parts && ports.files.open(path)->size() > largest_part_bytes;
    } catch (const base::AutomationError&) {
        return false;
    }
}

Text send_package(KsefPorts& ports, Client& client, ports::Database& database, const Text& path,
                  const FormCode& form, const BatchLogin& login) {
    if (!is_for_parts(ports, path))
        return send_in_batch_session(ports, client, database, path, form);
    PartsOptions options;
    options.on_uploaded = [&](const std::string& reference) {
        record_batch_session(ports, database, path, reference);
    };
    return send_in_parts(ports, client, path, form, login, options);
}

}  // namespace

KseF_comm::KseF_comm(KsefPorts ports)
    : ports_(std::move(ports)), client_(std::make_unique<Client>(ports_)) {}

KseF_comm::~KseF_comm() = default;

Text KseF_comm::baseUrl() const {
    return client_->base_url;
}

void KseF_comm::set_baseUrl(const Text& value) {
    client_->base_url = value;
}

Text KseF_comm::ExtractTokenFromResponse(const Text& resp) const {
    return extract_token(resp);
}

Bytes KseF_comm::Base64DecodeToBytes(const Text& base64) const {
    return ports_.xml.bytes_from_base64(ports::DomDocument::version_6, u"b64", base64);
}

Text KseF_comm::TimestampToUnixMs(const Text& timestamp) const {
    return timestamp_to_unix_ms(timestamp);
}

Bytes KseF_comm::HexStringToBytes(const Text& hexStr) const {
    return hex_string_to_bytes(hexStr);
}

Text KseF_comm::ExtractPublicKeyFromXML(const Text& xmlStr) const {
    return extract_key_bits(xmlStr);
}

Bytes KseF_comm::Base64ToBytes(const Text& base64Str) const {
    return base64_to_bytes(base64Str);
}

Text KseF_comm::Base64EncodeSS(const Text& strPlain) const {
    return base64_of_ansi(ports_.xml, ports_.code_page, strPlain);
}

Text KseF_comm::Base64Encode(const Bytes& bytData) const {
    return ports_.xml.base64_from_bytes(ports::DomDocument::unversioned, u"b64", bytData);
}

Text KseF_comm::Base64DecodeSS(const Text& base64Str) const {
    return ansi_of_base64(ports_.xml, ports_.code_page, base64Str);
}

Text KseF_comm::LoadXMLFromFile(const Text& FilePath) {
    return load_invoice(ports_.text_files, FilePath);
}

Text KseF_comm::SprawdzXMLzXSD(const Text& strXML, const Text& strXSD) {
    const Text wrong_settings = settings_failure(ports_);
    if (!wrong_settings.empty()) return u"Błąd walidacji: " + wrong_settings;
    return check_invoice(ports_.xml_documents, strXML, strXSD, ports_.settings.schema_namespace,
                         ports_.show_message);
}

Text KseF_comm::XMLdoHTML(const Text& strXML, const Text& strXSL, const Text& Plik) {
    return write_html(ports_.xml_documents, ports_.code_page, ports_.files, strXML, strXSL, Plik);
}

Text KseF_comm::Sha256XmlSimpleb(const Bytes& xml) const {
    return base::from_utf8(sha256_base64(ports_.crypto, xml));
}

Text KseF_comm::SendInvoiceToKSeF(ports::Database& dbb, const Text& nip,
                                  const base::SecretText& Token, const Text& xmlContent,
                                  const Text& systemCode, const Text& schemaVersion,
                                  const Text& formcode, std::int32_t pog517, const Text& Tablica,
                                  std::int32_t Tablica_id) {
    Text result = u"Nieznany błąd";
    try {
        if (Text failure = settings_failure(ports_); !failure.empty()) return failure;
        client_->begin_call(pog517);
        const TokenCheck token = check_token(Token, nip);
        if (!token.failure.empty()) return token.failure;
        Bytes invoice;
        try {
            invoice = invoice_bytes(ports_.code_page, xmlContent);
        } catch (const base::AutomationError& error) {
            return error.description();
        }
        if (const Text failure = authenticate(ports_, *client_, token.tax_number, Token);
            !failure.empty()) {
            return u"Błąd inicjalizacji sesji KSeF:" + failure;
        }
        result = send_in_online_session(ports_, *client_, DocumentRow(dbb, Tablica, Tablica_id),
                                        std::move(invoice), {systemCode, schemaVersion, formcode});
        client_->close_with_authentication_token();
    } catch (const std::exception&) {
        // The host sees no error; the text says what was known.
    }
    return result;
}

Text KseF_comm::log_in(std::int32_t environment, const Text& nip, const base::SecretText& token) {
    if (Text failure = settings_failure(ports_); !failure.empty()) return failure;
    client_->begin_call(environment);
    const TokenCheck check = check_token(token, nip);
    if (!check.failure.empty()) return check.failure;
    const Text failure = authenticate(ports_, *client_, check.tax_number, token);
    return failure.empty() ? Text() : u"Błąd inicjalizacji sesji KSeF:" + failure;
}

Text KseF_comm::GetUpo(ports::Database& dbb, const Text& nip, const base::SecretText& Token,
                       bool IsProduction0D1P2T) {
    // Without the test environment, whatever the argument's name says.
    const std::int32_t environment = IsProduction0D1P2T ? 1 : 0;
    try {
        if (Text failure = log_in(environment, nip, Token); !failure.empty()) return failure;
        if (ports_.settings.reconcile_by == ReconcileBy::name) {
            return reconcile_by_name(ports_, *client_, dbb, read_token(Token),
                                     [&] { return log_in(environment, nip, Token); });
        }
        reconcile_by_position(ports_, *client_, dbb);
        return {};
    } catch (const std::exception&) {
        return Text(unknown_reconciliation_failure);
    }
}

Text KseF_comm::GetFaktury(ports::Database& dbb, const Text& nip, const base::SecretText& Token,
                           std::int32_t id_grprod, std::int32_t pog517, const Text& subjectType) {
    try {
        if (Text failure = log_in(pog517, nip, Token); !failure.empty()) return failure;
        return download_invoices(ports_, *client_, dbb, id_grprod, subjectType);
    } catch (const std::exception&) {
        return u"Nieznany błąd";
    }
}

Text KseF_comm::GetFaktury_xml(ports::Database& dbb) {
    if (Text failure = settings_failure(ports_); !failure.empty()) return failure;
    return fetch_invoices(ports_, *client_, dbb, u"Nieznany błąd");
}

base::SecretText KseF_comm::GetToken(const Text& /*nip*/) {
    try {
        if (const Text failure = settings_failure(ports_); !failure.empty())
            return base::SecretText(failure);
        client_->renew_time();
        // One text with both rights in it, as the library has always sent it.
        TokenRequest request{"InvoiceRead,InvoiceWrite",
                             u"quen_" + ports_.locale.general_date(ports_.clock.now_local())};
        IssuedToken issued = request_token(*client_, request);
        client_->token_reference = std::move(issued.reference);
        return std::move(issued.token_or_failure);
    } catch (const std::exception&) {
        // No text may be taken for a token.
        return {};
    }
}

Text KseF_comm::GetQr2(ports::Database& dbb, const Text& NumSerCertyfikatu,
                       base::SecretText& Tablica, std::int32_t Tablica_id, const Text& nip) {
    try {
        const base::SecretText given = std::exchange(Tablica, {});
        Tablica += *piece_of(given, 0);
        if (Text failure = settings_failure(ports_); !failure.empty()) return failure;
        return make_certificate_link(ports_, *client_, dbb,
                                     {NumSerCertyfikatu, given, Tablica_id, nip});
    } catch (const std::exception&) {
        return {};
    }
}

Text KseF_comm::SendBach(ports::Database& dbb, const Text& xml, const Text& systemCode,
                         const Text& schemaVersion, const Text& formcode,
                         const base::SecretText& Tablica, const Text& /*Tablica_id*/,
                         std::int32_t pog517) {
    try {
        if (Text failure = settings_failure(ports_); !failure.empty()) return failure;
        client_->begin_call(pog517);
        const TokenCheck token = read_token(Tablica);
        if (!token.failure.empty()) return token.failure;
        Text failure = authenticate(ports_, *client_, token.tax_number, Tablica);
        if (failure.empty()) {
            failure =
                send_package(ports_, *client_, dbb, xml, {systemCode, schemaVersion, formcode},
                             {Tablica, token.tax_number});
        }
        return failure.empty() ? failure : u"Błąd inicjalizacji sesji KSeF:" + failure;
    } catch (const std::exception&) {
        return u"Nieznany Błąd";
    }
}

Text KseF_comm::PodzielPlik(const Text& sciezkaZrodlowa, const Text& folderDocelowy) {
    Text paths;
    try {
        for (const Text& piece : split_file(ports_.files, sciezkaZrodlowa, folderDocelowy)) {
            if (!paths.empty()) paths += u';';
            paths += piece;
        }
    } catch (const std::exception&) {
        // The host sees no error, and no piece of what is not whole.
    }
    return paths;
}

}  // namespace tavrix::ksef
