#include "sandbox/documents/fa3.h"

#include <charconv>
#include <cmath>

#include "sandbox/basics/text.h"

namespace tavrix::sandbox {
namespace {

/// The identifier of a party: exactly one of these stands in `DaneIdentyfikacyjne`.
Party read_party(const Element& element, const char* role_name = nullptr) {
    const Element data = element.child("DaneIdentyfikacyjne");
    Party party{"None", "", data.text("Nazwa"), 0};
    if (const Element nip = data.child("NIP")) {
        party.identifier_type = "Nip";
        party.identifier = nip.text();
    } else if (const Element internal = data.child("IDWew")) {
        party.identifier_type = "InternalId";
        party.identifier = internal.text();
    } else if (const Element vat_number = data.child("NrVatUE")) {
        party.identifier_type = "VatUe";
        party.identifier = data.text("KodUE") + vat_number.text();
    } else if (const Element other = data.child("NrID")) {
        party.identifier_type = "Other";
        party.identifier = other.text();
    }
    if (role_name != nullptr) party.role = number_of<int>(element.text(role_name)).value_or(0);
    return party;
}

/// An amount as the schema writes it, or 0 for something else.
double amount_of(const std::string& text) {
    double value = 0;
    // Numbers the schema does not know, "nan" and "1e9" among them, must not reach the metadata.
    if (text.find_first_not_of("0123456789.-") != std::string::npos) return 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

double rounded(double amount) {
    return std::round(amount * 100) / 100;
}

}  // namespace

std::string invoice_type(const std::string& kind) {
    // TRodzajFaktury of FA (3) to InvoiceType of the contract.
    constexpr std::pair<std::string_view, const char*> names[] = {
        {"VAT", "Vat"}, {"KOR", "Kor"},        {"ZAL", "Zal"},       {"ROZ", "Roz"},
        {"UPR", "Upr"}, {"KOR_ZAL", "KorZal"}, {"KOR_ROZ", "KorRoz"}};
    for (const auto& [schema_name, name] : names)
        if (kind == schema_name) return name;
    return {};
}

std::string form_system_code(const Element& invoice) {
    return invoice.child("Naglowek").child("KodFormularza").attribute("kodSystemowy");
}

SummaryResult summarize_invoice(const Element& invoice) {
    SummaryResult result;
    InvoiceSummary& summary = result.summary;
    const Element body = invoice.child("Fa");
    summary.invoice_number = body.text("P_2");
    summary.issue_date = body.text("P_1");
    summary.kind = body.text("RodzajFaktury");
    summary.currency = body.text("KodWaluty");
    summary.seller = read_party(invoice.child("Podmiot1"));
    summary.buyer = read_party(invoice.child("Podmiot2"));
    for (const Element& third : invoice.children("Podmiot3"))
        summary.third_parties.push_back(read_party(third, "Rola"));
    if (const Element authorized = invoice.child("PodmiotUpowazniony"))
        summary.authorized = read_party(authorized, "RolaPU");
    // P_13_x are the net sums by rate, P_14_x the tax; of an invoice in another currency P_14_xW is
    // the same tax in zloty, which is what the metadata carry.
    for (const Element& field : body.children()) {
        const std::string_view name = field.name();
        if (name.starts_with("P_13_")) summary.net_amount += amount_of(field.text());
        if (name.starts_with("P_14_") && !name.ends_with("W")) {
            const Element in_zloty = body.child(std::string(name) + "W");
            summary.vat_amount += amount_of(in_zloty ? in_zloty.text() : field.text());
        }
    }
    summary.net_amount = rounded(summary.net_amount);
    summary.vat_amount = rounded(summary.vat_amount);
    summary.gross_amount = amount_of(body.text("P_15"));
    summary.self_invoicing = body.child("Adnotacje").text("P_17") == "1";
    summary.has_attachment = bool(invoice.child("Zalacznik"));

    const auto need = [&](const std::string& value, const char* name) {
        if (value.empty()) result.problems.push_back(std::string("Brak elementu ") + name + ".");
    };
    need(summary.seller.identifier, "Podmiot1/DaneIdentyfikacyjne/NIP");
    need(summary.currency, "Fa/KodWaluty");
    need(summary.issue_date, "Fa/P_1");
    need(summary.invoice_number, "Fa/P_2");
    need(summary.kind, "Fa/RodzajFaktury");
    need(body.text("P_15"), "Fa/P_15");
    return result;
}

}  // namespace tavrix::sandbox
