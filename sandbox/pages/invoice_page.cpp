#include "sandbox/pages/invoice_page.h"

#include <algorithm>
#include <array>

#include "sandbox/basics/xml.h"
#include "sandbox/pages/html.h"
#include "sandbox/pages/polish.h"

namespace tavrix::sandbox {
namespace {

// An invoice may have 10 000 lines; who wants them all opens the file.
constexpr std::size_t most_lines = 200;
// A list reads up to fifty refused documents again, and nobody else is served meanwhile.
constexpr std::size_t largest_read_for_a_list = 150'000;

std::string party_identifier(const Element& data) {
    if (const Element nip = data.child("NIP")) return "NIP " + nip.text();
    if (const Element internal = data.child("IDWew"))
        return "Identyfikator wewnętrzny " + internal.text();
    if (const Element number = data.child("NrVatUE"))
        return "VAT UE " + data.text("KodUE") + number.text();
    if (const Element number = data.child("NrID"))
        return data.text("KodKraju") + " " + number.text();
    return "bez identyfikatora";
}

std::string render_party(const std::string& title, const Element& party) {
    if (!party) return "";
    const Element data = party.child("DaneIdentyfikacyjne"), address = party.child("Adres");
    std::string html = "<div><h3>" + title + "</h3><p><strong>" + xml_escape(data.text("Nazwa")) +
                       "</strong><br>" + xml_escape(party_identifier(data));
    for (const char* line : {"AdresL1", "AdresL2"})
        if (const std::string text = address.text(line); !text.empty())
            html += "<br>" + xml_escape(text);
    return html + "</p></div>";
}

std::string render_parties(const Element& root) {
    std::string html = "<div class=\"parties\">" +
                       render_party("Sprzedawca", root.child("Podmiot1")) +
                       render_party("Nabywca", root.child("Podmiot2"));
    for (const Element& third : root.children("Podmiot3"))
        html += render_party("Podmiot trzeci", third);
    return html + render_party("Podmiot upoważniony", root.child("PodmiotUpowazniony")) + "</div>";
}

/// The amount that is there; of the two only the unusual one says what it is.
std::string net_or_gross(const Element& line, const char* net, const char* gross) {
    if (line.child(net)) return amount_text(line.text(net));
    return line.child(gross) ? amount_text(line.text(gross)) + " brutto" : "";
}

std::string rate_text(const std::string& rate) {
    const bool number = !rate.empty() && rate.find_first_not_of("0123456789") == std::string::npos;
    return number ? rate + "%" : rate;
}

std::string render_lines(const Element& body) {
    const auto lines = body.children("FaWiersz");
    if (lines.empty()) return "";
    Table table("Pozycje", {{"Lp."},
                            {"Nazwa towaru lub usługi"},
                            {"Jm."},
                            {"Ilość", true},
                            {"Cena netto", true},
                            {"Wartość netto", true},
                            {"Stawka", true}});
    const std::size_t shown = std::min(lines.size(), most_lines);
    for (std::size_t i = 0; i < shown; ++i) {
        const Element& line = lines[i];
        // A correction may show a line twice: as it was and as it is.
        const std::string before =
            line.text("StanPrzed") == "1" ? badge("wait", "przed korektą") : "";
        table.row({xml_escape(line.text("NrWierszaFa")),
                   xml_escape(line.text("P_7")) + " " + before, xml_escape(line.text("P_8A")),
                   xml_escape(quantity_text(line.text("P_8B"))),
                   xml_escape(net_or_gross(line, "P_9A", "P_9B")),
                   xml_escape(net_or_gross(line, "P_11", "P_11A")),
                   xml_escape(rate_text(line.text("P_12")))});
    }
    return "<h3>Pozycje</h3>" + table.html() +
           (shown < lines.size()
                ? "<p class=\"note\">Pokazano " + count_text(shown) + " z " +
                      count_text(lines.size()) + " pozycji; wszystkie są w pliku XML.</p>"
                : "");
}

struct TaxRow {
    const char* label;
    const char* net;
    const char* tax;
};

// Source: the documentation of P_13_x and P_14_x in the FA (3) schema.
constexpr TaxRow tax_rows[] = {
    {"stawka podstawowa (22% lub 23%)", "P_13_1", "P_14_1"},
    {"stawka obniżona pierwsza (7% lub 8%)", "P_13_2", "P_14_2"},
    {"stawka obniżona druga (5%)", "P_13_3", "P_14_3"},
    {"ryczałt dla taksówek osobowych", "P_13_4", "P_14_4"},
    {"procedura szczególna (OSS)", "P_13_5", "P_14_5"},
    {"0% w kraju", "P_13_6_1", ""},
    {"0% – dostawa wewnątrzwspólnotowa", "P_13_6_2", ""},
    {"0% – eksport", "P_13_6_3", ""},
    {"zwolnione od podatku", "P_13_7", ""},
    {"poza terytorium kraju", "P_13_8", ""},
    {"usługi z art. 100 ust. 1 pkt 4", "P_13_9", ""},
    {"odwrotne obciążenie", "P_13_10", ""},
    {"procedura marży", "P_13_11", ""},
};

std::string render_totals(const Element& body) {
    const std::string currency = body.text("KodWaluty");
    Table table("Podatek", {{"Stawka"}, {"Netto", true}, {"VAT", true}});
    for (const TaxRow& tax : tax_rows) {
        if (!body.child(tax.net)) continue;
        const std::string amount = *tax.tax == '\0' ? "" : body.text(tax.tax);
        table.row({tax.label, xml_escape(amount_text(body.text(tax.net))),
                   xml_escape(amount_text(amount))});
    }
    return "<h3>Podatek i suma</h3>" + table.html() +
           "<p class=\"total\">Kwota należności ogółem: " +
           xml_escape(money_text(body.text("P_15"), currency)) + "</p>";
}

template <std::size_t count>
using Names = std::array<std::pair<const char*, const char*>, count>;

/// The name of a code; a code that has none stands for itself.
template <std::size_t count>
std::string name_of(const std::string& code, const Names<count>& names) {
    for (const auto& [known, name] : names)
        if (code == known) return name;
    return code;
}

// Source: TRodzajFaktury of the FA (3) schema.
constexpr Names<7> invoice_kinds = {{
    {"VAT", "Faktura VAT"},
    {"KOR", "Faktura korygująca"},
    {"ZAL", "Faktura zaliczkowa"},
    {"ROZ", "Faktura rozliczeniowa"},
    {"UPR", "Faktura uproszczona"},
    {"KOR_ZAL", "Korekta faktury zaliczkowej"},
    {"KOR_ROZ", "Korekta faktury rozliczeniowej"},
}};

// Source: TFormaPlatnosci of the same.
constexpr Names<7> payment_forms = {{
    {"1", "gotówka"},
    {"2", "karta"},
    {"3", "bon"},
    {"4", "czek"},
    {"5", "kredyt"},
    {"6", "przelew"},
    {"7", "mobilna"},
}};

std::string render_payment(const Element& payment) {
    std::string rows;
    if (payment.text("Zaplacono") == "1") rows += fact("Zapłacono", "tak");
    rows += fact("Data zapłaty", date_text(payment.text("DataZaplaty")));
    for (const Element& term : payment.children("TerminPlatnosci"))
        rows += fact("Termin płatności", date_text(term.text("Termin")));
    rows += fact("Forma płatności", name_of(payment.text("FormaPlatnosci"), payment_forms)) +
            fact("Inna forma płatności", payment.text("OpisPlatnosci"));
    for (const Element& account : payment.children("RachunekBankowy"))
        rows += fact("Rachunek bankowy", account_text(account.text("NrRB"))) +
                fact("Bank", account.text("NazwaBanku"));
    return rows.empty() ? "" : "<h3>Płatność</h3>" + facts(rows);
}

std::string render_attachment(const Element& attachment) {
    if (!attachment) return "";
    const auto blocks = attachment.children("BlokDanych");
    std::string rows = fact("Bloków danych", count_text(blocks.size()));
    std::size_t tables = 0;
    for (const Element& block : blocks) {
        if (rows.size() < 20'000) rows += fact("Blok", block.text("ZNaglowek"));
        tables += block.children("Tabela").size();
    }
    return "<h3>Załącznik</h3>" + facts(rows + fact("Tabel", count_text(tables))) +
           "<p class=\"note\">Treść załącznika jest w pliku XML.</p>";
}

std::string render_corrected(const Element& body) {
    std::string rows = fact("Przyczyna korekty", body.text("PrzyczynaKorekty"));
    std::size_t shown = 0;
    for (const Element& corrected : body.children("DaneFaKorygowanej")) {
        if (++shown > most_lines) break;
        rows += fact("Koryguje fakturę", corrected.text("NrFaKorygowanej") + " z dnia " +
                                             date_text(corrected.text("DataWystFaKorygowanej"))) +
                fact("Jej numer KSeF", corrected.text("NrKSeFFaKorygowanej"));
    }
    return rows;
}

std::string note(const std::string& html) {
    return "<p class=\"note\">" + html + "</p>";
}

/// The heading as far as the document can be read.
void read_heading(const std::string& xml, InvoiceHeading& heading) {
    const ParsedXml parsed = parse_xml(xml);
    const Element root = Element::root_of(parsed.document), body = root.child("Fa");
    const Element buyer = root.child("Podmiot2").child("DaneIdentyfikacyjne");
    if (body) heading.number = body.text("P_2");
    if (buyer) heading.buyer = buyer.child("Nazwa") ? buyer.text("Nazwa") : party_identifier(buyer);
    heading.amount = money_text(body.text("P_15"), body.text("KodWaluty"));
    const Element seller = root.child("Podmiot1").child("DaneIdentyfikacyjne");
    heading.parties = seller.text("Nazwa") + ' ' + seller.text("NIP") + ' ' + buyer.text("NIP");
    heading.attachment = bool(root.child("Zalacznik"));
    if (heading.number.empty()) heading.number = body ? "(bez numeru)" : "(nie do odczytania)";
}

}  // namespace

InvoiceHeading heading_of(const Invoice& invoice) {
    InvoiceHeading heading;
    if (invoice.summary) {
        const InvoiceSummary& summary = *invoice.summary;
        heading = {summary.invoice_number.empty() ? "(bez numeru)" : summary.invoice_number,
                   summary.buyer.name.empty() ? summary.buyer.identifier : summary.buyer.name,
                   money_text(summary.gross_amount, summary.currency), "", summary.has_attachment};
    } else if (invoice.xml.empty()) {
        heading.number = invoice.stage == InvoiceStage::finished ? "(nie do odszyfrowania)"
                                                                 : "(w przetwarzaniu)";
    } else if (invoice.xml.size() > largest_read_for_a_list) {
        heading.number = "(duży dokument)";
    } else {
        read_heading(invoice.xml, heading);
    }
    return heading;
}

std::string render_invoice(const std::string& xml) {
    const ParsedXml parsed = parse_xml(xml);
    if (!parsed.document)
        return note("Dokumentu nie da się odczytać. " + detail_html(parsed.error));
    const Element root = Element::root_of(parsed.document), body = root.child("Fa");
    if (root.name() != "Faktura" || !body)
        return note("Dokument nie jest fakturą w strukturze FA.");
    const std::string period = body.child("OkresFa")
                                   ? date_text(body.child("OkresFa").text("P_6_Od")) + " – " +
                                         date_text(body.child("OkresFa").text("P_6_Do"))
                                   : date_text(body.text("P_6"));
    return "<h2>" + xml_escape(name_of(body.text("RodzajFaktury"), invoice_kinds)) + " " +
           xml_escape(body.text("P_2")) + "</h2>" +
           facts(fact("Data wystawienia", date_text(body.text("P_1"))) +
                 fact("Miejsce wystawienia", body.text("P_1M")) +
                 fact("Data dostawy lub wykonania usługi", period) + render_corrected(body)) +
           render_parties(root) + render_lines(body) + render_totals(body) +
           render_payment(body.child("Platnosc")) + render_attachment(root.child("Zalacznik"));
}

}  // namespace tavrix::sandbox
