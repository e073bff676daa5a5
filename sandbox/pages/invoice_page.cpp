#include "sandbox/pages/invoice_page.h"

#include <array>
#include <cstdio>

#include "sandbox/basics/xml.h"

namespace tavrix::sandbox {
namespace {

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
    std::string html = "<div class=\"party\"><h3>" + title + "</h3><p><strong>" +
                       xml_escape(data.text("Nazwa")) + "</strong><br>" +
                       xml_escape(party_identifier(data));
    for (const char* line : {"AdresL1", "AdresL2"})
        if (const std::string text = address.text(line); !text.empty())
            html += "<br>" + xml_escape(text);
    return html + "</p></div>";
}

/// `1234567.5` as a Polish reader expects it: `1 234 567,50`. What is not a plain number stays as
/// it is.
std::string amount_text(const std::string& amount) {
    if (amount.empty() || amount.find_first_not_of("0123456789.-") != std::string::npos)
        return amount;
    const std::size_t point = std::min(amount.find('.'), amount.size());
    std::string whole = amount.substr(0, point),
                fraction = amount.substr(std::min(point + 1, amount.size()));
    while (fraction.size() < 2) fraction += '0';
    const std::size_t sign = whole.starts_with('-') ? 1 : 0;
    for (std::size_t at = whole.size(); at > sign + 3; at -= 3) whole.insert(at - 3, "\xC2\xA0");
    return whole + "," + fraction;
}

std::string cell(const std::string& text, const char* css_class = "") {
    return std::string("<td class=\"") + css_class + "\">" + xml_escape(text) + "</td>";
}

std::string render_lines(const Element& body) {
    const auto lines = body.children("FaWiersz");
    if (lines.empty()) return "";
    std::string html =
        "<h3>Pozycje</h3><table class=\"grid\"><thead><tr><th>Lp.</th><th>Nazwa towaru lub "
        "usługi</th>"
        "<th>Jm.</th><th class=\"n\">Ilość</th><th class=\"n\">Cena netto</th>"
        "<th class=\"n\">Wartość</th><th class=\"n\">Stawka</th></tr></thead><tbody>";
    for (const Element& line : lines) {
        const std::string value =
            line.text("P_11").empty() ? line.text("P_11A") : line.text("P_11");
        const std::string price = line.text("P_9A").empty() ? line.text("P_9B") : line.text("P_9A");
        std::string rate = line.text("P_12");
        if (!rate.empty() && rate.find_first_not_of("0123456789") == std::string::npos) rate += "%";
        html += "<tr>" + cell(line.text("NrWierszaFa")) + cell(line.text("P_7")) +
                cell(line.text("P_8A")) + cell(line.text("P_8B"), "n") +
                cell(amount_text(price), "n") + cell(amount_text(value), "n") + cell(rate, "n") +
                "</tr>";
    }
    return html + "</tbody></table>";
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
    std::string html =
        "<h3>Podatek i suma</h3><table class=\"grid narrow\"><thead><tr><th>Stawka</th>"
        "<th class=\"n\">Netto</th><th class=\"n\">VAT</th></tr></thead><tbody>";
    for (const TaxRow& tax : tax_rows) {
        if (!body.child(tax.net)) continue;
        html += "<tr>" + cell(tax.label) + cell(amount_text(body.text(tax.net)), "n") +
                cell(amount_text(*tax.tax == '\0' ? "" : body.text(tax.tax)), "n") + "</tr>";
    }
    return html +
           "</tbody><tfoot><tr><th>Razem do zapłaty</th><td class=\"n total\" colspan=\"2\">" +
           xml_escape(amount_text(body.text("P_15")) + " " + body.text("KodWaluty")) +
           "</td></tr></tfoot></table>";
}

std::string kind_text(const std::string& kind) {
    constexpr std::array<std::pair<const char*, const char*>, 7> names = {{
        {"VAT", "Faktura VAT"},
        {"KOR", "Faktura korygująca"},
        {"ZAL", "Faktura zaliczkowa"},
        {"ROZ", "Faktura rozliczeniowa"},
        {"UPR", "Faktura uproszczona"},
        {"KOR_ZAL", "Korekta faktury zaliczkowej"},
        {"KOR_ROZ", "Korekta faktury rozliczeniowej"},
    }};
    for (const auto& [code, name] : names)
        if (kind == code) return name;
    return kind;
}

std::string render_payment(const Element& payment) {
    if (!payment) return "";
    const std::string rows =
        fact("Termin płatności", payment.child("TerminPlatnosci").text("Termin")) +
        fact("Rachunek bankowy", payment.child("RachunekBankowy").text("NrRB")) +
        fact("Data zapłaty", payment.text("DataZaplaty"));
    return rows.empty() ? "" : "<h3>Płatność</h3><table class=\"facts\">" + rows + "</table>";
}

}  // namespace

std::string fact(const std::string& label, const std::string& value) {
    return value.empty() ? "" : "<tr><th>" + label + "</th><td>" + xml_escape(value) + "</td></tr>";
}

std::string money_text(double amount) {
    char text[400];
    std::snprintf(text, sizeof text, "%.2f", amount);
    return amount_text(text);
}

std::string render_invoice(const std::string& xml) {
    if (xml.empty()) return "<p class=\"note\">Nie udało się odszyfrować dokumentu.</p>";
    const ParsedXml parsed = parse_xml(xml);
    if (!parsed.document)
        return "<p class=\"note\">Dokumentu nie da się odczytać: " + xml_escape(parsed.error) +
               "</p>";
    const Element root = Element::root_of(parsed.document), body = root.child("Fa");
    if (root.name() != "Faktura" || !body)
        return "<p class=\"note\">Dokument nie jest fakturą w strukturze FA.</p>";

    std::string html = "<h2>" + xml_escape(kind_text(body.text("RodzajFaktury"))) + " " +
                       xml_escape(body.text("P_2")) + "</h2><table class=\"facts\">" +
                       fact("Data wystawienia", body.text("P_1")) +
                       fact("Miejsce wystawienia", body.text("P_1M")) +
                       fact("Data dostawy lub wykonania usługi", body.text("P_6")) + "</table>";
    html += "<div class=\"parties\">" + render_party("Sprzedawca", root.child("Podmiot1")) +
            render_party("Nabywca", root.child("Podmiot2"));
    for (const Element& third : root.children("Podmiot3"))
        html += render_party("Podmiot trzeci", third);
    html += render_party("Podmiot upoważniony", root.child("PodmiotUpowazniony")) + "</div>";
    return html + render_lines(body) + render_totals(body) + render_payment(body.child("Platnosc"));
}

}  // namespace tavrix::sandbox
