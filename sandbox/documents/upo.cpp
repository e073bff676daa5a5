// Shape: the published schema upo-v4-3.xsd and the two examples beside it. The schema fixes the
// name of the receiving body to "Ministerstwo Finansów"; the examples of the test environment add a
// suffix the schema refuses, so the schema is followed. The service seals its confirmations
// electronically; the sandbox has no such seal and adds none.
#include "sandbox/documents/upo.h"

#include "sandbox/basics/xml.h"
#include "sandbox/documents/schemas.h"

namespace tavrix::sandbox {
namespace {

class UpoWriter {
  public:
    UpoWriter() {
        text_ =
            "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
            "<Potwierdzenie xmlns=\"http://upo.schematy.mf.gov.pl/KSeF/v4-3\">\n";
    }

    void open(const char* name) {
        indent();
        text_ += "<" + std::string(name) + ">\n";
        ++depth_;
    }
    void close(const char* name) {
        --depth_;
        indent();
        text_ += "</" + std::string(name) + ">\n";
    }
    void value(const char* name, std::string_view value) {
        indent();
        text_ += "<" + std::string(name) + ">" + xml_escape(value) + "</" + name + ">\n";
    }
    std::string finish() { return std::move(text_ += "</Potwierdzenie>"); }

  private:
    void indent() { text_.append(std::size_t(depth_), '\t'); }

    std::string text_;
    int depth_ = 1;
};

/// The schema's name for each kind of context.
const char* context_element(const Context& context) {
    return context.type == "InternalId" ? "IdWewnetrzny" : "Nip";
}

void write_heading(UpoWriter& upo, const Session& session, const Authentication& authentication) {
    upo.value("NazwaPodmiotuPrzyjmujacego", "Ministerstwo Finansów");
    upo.value("NumerReferencyjnySesji", session.reference);
    upo.open("Uwierzytelnienie");
    upo.open("IdKontekstu");
    upo.value(context_element(session.context), session.context.value);
    upo.close("IdKontekstu");
    // A token that carries no number of the service's form is named by its hash.
    if (authentication.token_reference.empty())
        upo.value("SkrotDokumentuUwierzytelniajacego", authentication.token_hash);
    else
        upo.value("NumerReferencyjnyTokenaKSeF", authentication.token_reference);
    upo.close("Uwierzytelnienie");
}

void write_form(UpoWriter& upo, const FormCode& form) {
    upo.value("NazwaStrukturyLogicznej", SchemaFolder::schema_name(form));
    upo.value("KodFormularza", form.system_code);
}

void write_document(UpoWriter& upo, const Invoice& invoice) {
    const InvoiceSummary& summary = *invoice.summary;
    upo.open("Dokument");
    upo.value("NipSprzedawcy", summary.seller.identifier);
    upo.value("NumerKSeFDokumentu", invoice.ksef_number);
    upo.value("NumerFaktury", summary.invoice_number);
    upo.value("DataWystawieniaFaktury", summary.issue_date);
    upo.value("DataPrzeslaniaDokumentu", polish_time_text(invoice.received));
    upo.value("DataNadaniaNumeruKSeF", polish_time_text(invoice.acquired));
    upo.value("SkrotDokumentu", invoice.invoice_hash);
    upo.value("TrybWysylki", mode_name(invoice));
    upo.close("Dokument");
}

}  // namespace

std::string make_invoice_upo(const Session& session, const Authentication& authentication,
                             const Invoice& invoice) {
    UpoWriter upo;
    write_heading(upo, session, authentication);
    write_form(upo, session.form_code);
    write_document(upo, invoice);
    return upo.finish();
}

std::string make_session_upo(const Session& session, const Authentication& authentication,
                             const std::vector<const Invoice*>& accepted) {
    UpoWriter upo;
    write_heading(upo, session, authentication);
    upo.open("OpisPotwierdzenia");
    upo.value("Strona", "1");
    upo.value("LiczbaStron", "1");
    upo.value("ZakresDokumentowOd", "1");
    upo.value("ZakresDokumentowDo", std::to_string(accepted.size()));
    upo.value("CalkowitaLiczbaDokumentow", std::to_string(accepted.size()));
    upo.close("OpisPotwierdzenia");
    write_form(upo, session.form_code);
    for (const Invoice* invoice : accepted) write_document(upo, *invoice);
    return upo.finish();
}

}  // namespace tavrix::sandbox
