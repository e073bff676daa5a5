#include "sandbox/service/metadata_filters.h"

#include <algorithm>

#include "sandbox/basics/ksef_number.h"
#include "sandbox/basics/text.h"
#include "sandbox/documents/fa3.h"
#include "sandbox/exchange/body.h"
#include "sandbox/exchange/refusals.h"

namespace tavrix::sandbox {
namespace {

constexpr int longest_range_months = 3;
constexpr std::size_t longest_invoice_number = 256;
constexpr std::size_t longest_buyer_identifier = 50;

// Source: the enumerations of the contract's InvoiceQueryFilters.
constexpr std::string_view date_types[] = {"Issue", "Invoicing", "PermanentStorage"};
constexpr std::string_view modes[] = {"Online", "Offline"};
constexpr std::string_view form_types[] = {"FA", "PEF", "FA_RR"};
constexpr std::string_view amount_types[] = {"Brutto", "Netto", "Vat"};
constexpr std::string_view buyer_types[] = {"Nip", "VatUe", "Other", "None"};
constexpr std::string_view invoice_types[] = {"Vat",      "Zal",    "Kor",    "Roz",
                                              "Upr",      "KorZal", "KorRoz", "VatPef",
                                              "VatPefSp", "KorPef", "VatRr",  "KorVatRr"};
constexpr std::string_view currencies =
    "AED AFN ALL AMD ANG AOA ARS AUD AWG AZN BAM BBD BDT BGN BHD BIF BMD BND BOB BOV BRL BSD BTN "
    "BWP BYN BZD CAD CDF CHE CHF CHW CLF CLP CNY COP COU CRC CUC CUP CVE CZK DJF DKK DOP DZD EGP "
    "ERN ETB EUR FJD FKP GBP GEL GGP GHS GIP GMD GNF GTQ GYD HKD HNL HRK HTG HUF IDR ILS IMP INR "
    "IQD IRR ISK JEP JMD JOD JPY KES KGS KHR KMF KPW KRW KWD KYD KZT LAK LBP LKR LRD LSL LYD MAD "
    "MDL MGA MKD MMK MNT MOP MRU MUR MVR MWK MXN MXV MYR MZN NAD NGN NIO NOK NPR NZD OMR PAB PEN "
    "PGK PHP PKR PLN PYG QAR RON RSD RUB RWF SAR SBD SCR SDG SEK SGD SHP SLL SOS SRD SSP STN SVC "
    "SYP SZL THB TJS TMT TND TOP TRY TTD TWD TZS UAH UGX USD USN UYI UYU UYW UZS VES VND VUV WST "
    "XAF XAG XAU XBA XBB XBC XBD XCD XCG XDR XOF XPD XPF XPT XSU XUA XXX YER ZAR ZMW ZWL";

bool is_currency(std::string_view code) {
    const std::size_t at = currencies.find(code);
    return code.size() == 3 && at != std::string_view::npos && at % 4 == 0;
}

/// A date without an offset is Polish time, as the contract says of this query.
Instant read_moment(const Json& range, const char* name) {
    const auto moment = parse_polish_instant(required_text(range, name));
    if (!moment) throw wrong_format(name);
    return *moment;
}

std::string at_most(const Json& body, const char* name, std::size_t characters) {
    std::string text = optional_text(body, name);
    if (character_count(text) > characters)
        throw invalid_input("Pole '" + std::string(name) + "' może mieć najwyżej " +
                            std::to_string(characters) + " znaków.");
    return text;
}

std::optional<double> read_bound(const Json& amount, const char* name) {
    const Json* value = given(amount, name);
    if (value == nullptr) return std::nullopt;
    if (!value->is_number()) throw wrong_format(name);
    return value->get<double>();
}

Condition amount_condition(const Json& amount) {
    const std::string type = required_choice(amount, "type", amount_types);
    const double InvoiceSummary::*member = type == "Netto"    ? &InvoiceSummary::net_amount
                                           : type == "Brutto" ? &InvoiceSummary::gross_amount
                                                              : &InvoiceSummary::vat_amount;
    const auto from = read_bound(amount, "from"), to = read_bound(amount, "to");
    return [=](const Invoice& it, const FormCode&) {
        const double value = (*it.summary).*member;
        return (!from || value >= *from) && (!to || value <= *to);
    };
}

Condition buyer_condition(const Json& buyer) {
    const std::string type = required_choice(buyer, "type", buyer_types),
                      value = at_most(buyer, "value", longest_buyer_identifier);
    return [=](const Invoice& it, const FormCode&) {
        return it.summary->buyer.identifier_type == type && it.summary->buyer.identifier == value;
    };
}

/// The values of a list, each of which must pass; none when the member is absent or empty.
template <typename Known>
std::vector<std::string> read_list(const Json& body, const char* name, Known known) {
    if (given(body, name) == nullptr) return {};
    std::vector<std::string> values = text_list(body, name);
    for (const std::string& value : values)
        if (!known(value)) throw unknown_value(name);
    return values;
}

}  // namespace

Instant DateRange::moment_of(const Invoice& invoice) const {
    if (type == "Issue") return parse_instant(invoice.summary->issue_date).value_or(Instant());
    return type == "Invoicing" ? invoice.received : invoice.stored;
}

bool DateRange::admits(const Invoice& invoice) const {
    if (moment_of(invoice) < from) return false;
    return type == "Issue" ? invoice.summary->issue_date <= last_day : moment_of(invoice) <= to;
}

DateRange read_date_range(const Json& body, Instant now) {
    const Json& range = required_object(body, "dateRange");
    DateRange result{required_choice(range, "dateType", date_types), read_moment(range, "from"),
                     now, polish_date_text(now),
                     optional_flag(range, "restrictToPermanentStorageHwmDate")};
    if (given(range, "to") != nullptr) {
        result.to = read_moment(range, "to");
        result.last_day = required_text(range, "to").substr(0, 10);
    }
    if (result.to < result.from)
        throw invalid_input("Początek zakresu dat jest późniejszy niż jego koniec.");
    if (!within_months(result.from, result.to, longest_range_months))
        throw invalid_input("Zakres dat może obejmować najwyżej 3 miesiące.");
    return result;
}

std::vector<Condition> read_conditions(const Json& body) {
    std::vector<Condition> conditions;
    const auto text = [&](const char* name, auto check, auto value_of) {
        if (given(body, name) == nullptr) return;
        const std::string wanted = optional_text(body, name);
        if (!check(wanted)) throw unknown_value(name);
        conditions.push_back(
            [=](const Invoice& it, const FormCode& form) { return value_of(it, form) == wanted; });
    };
    const auto one_of = [](const auto& values) {
        return [&values](const std::string& value) { return contains(values, value); };
    };
    text("ksefNumber", has_ksef_number_form,
         [](const Invoice& it, const FormCode&) { return it.ksef_number; });
    at_most(body, "invoiceNumber", longest_invoice_number);
    text(
        "invoiceNumber", [](const std::string&) { return true; },
        [](const Invoice& it, const FormCode&) { return it.summary->invoice_number; });
    text("sellerNip", is_nip,
         [](const Invoice& it, const FormCode&) { return it.summary->seller.identifier; });
    text("invoicingMode", one_of(modes),
         [](const Invoice& it, const FormCode&) { return std::string(mode_name(it)); });
    text("formType", one_of(form_types),
         [](const Invoice&, const FormCode& form) { return form.value; });

    const auto flag = [&](const char* name, bool InvoiceSummary::*member) {
        if (given(body, name) == nullptr) return;
        const bool wanted = optional_flag(body, name);
        conditions.push_back(
            [=](const Invoice& it, const FormCode&) { return (*it.summary).*member == wanted; });
    };
    flag("isSelfInvoicing", &InvoiceSummary::self_invoicing);
    flag("hasAttachment", &InvoiceSummary::has_attachment);

    const auto list = [&](const char* name, auto known, auto value_of) {
        const auto wanted = read_list(body, name, known);
        if (wanted.empty()) return;
        conditions.push_back([=](const Invoice& it, const FormCode&) {
            return contains(wanted, value_of(*it.summary));
        });
    };
    list("currencyCodes", is_currency, [](const InvoiceSummary& it) { return it.currency; });
    list("invoiceTypes", one_of(invoice_types),
         [](const InvoiceSummary& it) { return invoice_type(it.kind); });

    if (given(body, "buyerIdentifier") != nullptr)
        conditions.push_back(buyer_condition(required_object(body, "buyerIdentifier")));
    if (given(body, "amount") != nullptr)
        conditions.push_back(amount_condition(required_object(body, "amount")));
    return conditions;
}

}  // namespace tavrix::sandbox
