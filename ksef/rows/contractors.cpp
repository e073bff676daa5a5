#include "ksef/rows/contractors.h"

#include "ksef/rows/fields.h"

namespace tavrix::ksef {
namespace {

struct Register {
    base::TextView letters;
    base::TextView condition;
};

constexpr base::TextView only_active = u"and konh_activ<>0 ";

// In the order in which they are tried.
constexpr Register registers[] = {
    {u"KD", only_active}, {u"KX", only_active}, {u"KD", u""}, {u"KX", u""}};

base::Text statement(const Register& from, const base::Text& tax_number) {
    return u"select top 1 konh_id,(select top 1 1 from Kontrahenci_parametry where "
           u"Kontrahenci_parametry.konh_id=kontrahenci.konh_id and czy_eksf<>0) as czy_eksf from "
           u"kontrahenci where substring(kartotekakh,1,2)='" +
           base::Text(from.letters) + u"' " + base::Text(from.condition) +
           u"and replace(replace(konh_nip,'-',''),' ','')=" + sql_literal(tax_number);
}

}  // namespace

std::optional<Contractor> Contractors::find(const base::Text& tax_number) {
    // Contractors without a number are not all the same one.
    if (tax_number.empty()) return std::nullopt;
    const auto known = known_.find(tax_number);
    if (known != known_.end()) return known->second;
    return known_[tax_number] = look_up(tax_number);
}

std::optional<Contractor> Contractors::look_up(const base::Text& tax_number) {
    for (const Register& from : registers) {
        const auto rows = database_.open(statement(from, tax_number));
        if (rows->at_end()) continue;
        return Contractor{rows->field(u"konh_id"),
                          ports::text_of(rows->field(u"czy_eksf")) == u"1"};
    }
    return std::nullopt;
}

}  // namespace tavrix::ksef
