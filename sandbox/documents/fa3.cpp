#include "sandbox/documents/fa3.h"

#include <charconv>
#include <cmath>
#include <optional>

#include "sandbox/basics/ksef_number.h"
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

/// An amount as the schema writes it (TKwotowy): at most sixteen digits and two more.
std::optional<double> amount_of(std::string_view text) {
    const auto digits_only = [](std::string_view part, std::size_t most) {
        return !part.empty() && part.size() <= most &&
               part.find_first_not_of("0123456789") == std::string_view::npos;
    };
    const std::string_view bare = text.substr(text.starts_with('-') ? 1 : 0),
                           whole = bare.substr(0, bare.find('.'));
    if (!digits_only(whole, 16) || (whole.size() > 1 && whole[0] == '0')) return std::nullopt;
    if (whole.size() < bare.size() && !digits_only(bare.substr(whole.size() + 1), 2))
        return std::nullopt;
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

/// What the answers about an invoice could not carry; a document that agrees with the schema has
/// none of it. Source: InvoiceMetadata of the contract, and the schema of confirmations.
class SummaryCheck {
  public:
    explicit SummaryCheck(std::vector<std::string>& problems) : problems_(problems) {}

    void need(bool good, const std::string& element) {
        if (!good) problems_.push_back("Nieprawidłowa wartość elementu " + element + ".");
    }
    void present(const std::string& value, const std::string& element) {
        if (value.empty()) problems_.push_back("Brak elementu " + element + ".");
    }
    void length(const std::string& value, std::size_t most, const std::string& element) {
        need(character_count(value) <= most, element);
    }
    void party(const Party& party, const std::string& element) {
        length(party.name, 512, element + "/DaneIdentyfikacyjne/Nazwa");
        length(party.identifier, 50, element + "/DaneIdentyfikacyjne");
    }
    double amount(const Element& field) {
        const auto value = amount_of(field.text());
        need(value.has_value(), "Fa/" + std::string(field.name()));
        return value.value_or(0);
    }

  private:
    std::vector<std::string>& problems_;
};

void check_parties(const InvoiceSummary& summary, SummaryCheck& check) {
    check.party(summary.seller, "Podmiot1");
    check.party(summary.buyer, "Podmiot2");
    check.need(summary.buyer.identifier_type != "InternalId", "Podmiot2/DaneIdentyfikacyjne/IDWew");
    for (const Party& third : summary.third_parties) {
        check.party(third, "Podmiot3");
        check.need(third.role >= 0 && third.role <= 11, "Podmiot3/Rola");
    }
    if (!summary.authorized) return;
    check.party(*summary.authorized, "PodmiotUpowazniony");
    check.need(is_nip(summary.authorized->identifier),
               "PodmiotUpowazniony/DaneIdentyfikacyjne/NIP");
    check.need(summary.authorized->role >= 1 && summary.authorized->role <= 3,
               "PodmiotUpowazniony/RolaPU");
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
    SummaryCheck check(result.problems);
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
        if (name.starts_with("P_13_")) summary.net_amount += check.amount(field);
        if (name.starts_with("P_14_") && !name.ends_with("W")) {
            const Element in_zloty = body.child(std::string(name) + "W");
            summary.vat_amount += check.amount(in_zloty ? in_zloty : field);
        }
    }
    summary.net_amount = rounded(summary.net_amount);
    summary.vat_amount = rounded(summary.vat_amount);
    if (const Element gross = body.child("P_15")) summary.gross_amount = check.amount(gross);
    summary.self_invoicing = body.child("Adnotacje").text("P_17") == "1";
    summary.has_attachment = bool(invoice.child("Zalacznik"));

    check.present(summary.seller.identifier, "Podmiot1/DaneIdentyfikacyjne/NIP");
    check.present(summary.currency, "Fa/KodWaluty");
    check.present(summary.issue_date, "Fa/P_1");
    check.present(summary.invoice_number, "Fa/P_2");
    check.present(summary.kind, "Fa/RodzajFaktury");
    check.present(body.text("P_15"), "Fa/P_15");
    check.need(summary.currency.size() == 3, "Fa/KodWaluty");
    check.need(!invoice_type(summary.kind).empty(), "Fa/RodzajFaktury");
    check.length(summary.invoice_number, 256, "Fa/P_2");
    check_parties(summary, check);
    return result;
}

}  // namespace tavrix::sandbox
