#include "ksef/rows/package_documents.h"

#include <algorithm>

#include "ksef/rows/fields.h"

namespace tavrix::ksef {
namespace {

// The tables of documents; of the first one are those that are looked for.
constexpr base::TextView tables[] = {u"dok_fak", u"dok_KFA", u"dok_dar", u"dok_kda"};

void write(ports::Recordset& rows, const base::Text& ksef_number, const PackageOutcome& outcome,
           const base::DateTime& now) {
    const base::TextView note = column_of(Field::note).name;
    rows.set_field(column_of(Field::ksef_number).name, ksef_number);
    rows.set_field(column_of(Field::status).name, base::Text(outcome.status));
    rows.set_field(note, base::Text(fitting(rows, note, outcome.note)));
    rows.set_field(column_of(Field::operation_time).name, now);
    rows.update_batch();
}

base::Text text_in(ports::Recordset& rows, Field field) {
    return ports::text_of(rows.field(column_of(field).name));
}

}  // namespace

bool PackageDocuments::record(const base::Text& document_number, const base::Text& reference,
                              const base::Text& ksef_number, const PackageOutcome& outcome,
                              const base::DateTime& now) {
    const auto rows = database_.open(
        u"select DATA_OPERACJI,status_ksef,NumerRef_ksef,UPO_ksef,numer_ksef,"
        u"Export_Opis_bledu_ksef from " +
        base::Text(tables[0]) + u" where ddout_numer='" + document_number +
        u"' and NumerRef_ksef='" + reference + u"' ");
    if (rows->at_end()) return false;
    write(*rows, ksef_number, outcome, now);
    return true;
}

template <typename Fits>
std::optional<PackageDocument> PackageDocuments::find(base::TextView column,
                                                      const base::Text& value,
                                                      const base::Text& reference, bool are_copies,
                                                      Fits fits) {
    if (value.empty()) return std::nullopt;
    const auto rows = database_.open(
        u"select " + base::Text(key_column) + u",NumerRef_ksef,numer_ksef,HashFaktury from " +
        base::Text(tables[0]) + u" where " + base::Text(column) + u"=" + sql_literal(value));
    std::optional<PackageDocument> first;
    bool is_only_one = true;
    for (; !rows->at_end(); rows->move_next()) {
        if (!fits(*rows)) continue;
        const PackageDocument document{base::Text(tables[0]),
                                       ports::text_of(rows->field(key_column))};
        if (!reference.empty() && text_in(*rows, Field::reference) == reference) return document;
        is_only_one = !first;
        if (!first) first = document;
    }
    return are_copies || is_only_one ? first : std::nullopt;
}

std::optional<PackageDocument> PackageDocuments::find_by_hash(const base::Text& hash,
                                                              const base::Text& reference) {
    return find(column_of(Field::hash).name, hash, reference, true,
                [](ports::Recordset&) { return true; });
}

std::optional<PackageDocument> PackageDocuments::find_by_number(const base::Text& number,
                                                                const base::Text& reference,
                                                                const base::Text& hash,
                                                                const base::Text& ksef_number) {
    return find(u"ddout_numer", number, reference, false, [&](ports::Recordset& row) {
        const base::Text known_number = text_in(row, Field::ksef_number);
        const base::Text known_hash = text_in(row, Field::hash);
        return (known_number.empty() || known_number == ksef_number) &&
               (known_hash.empty() || hash.empty() || known_hash == hash);
    });
}

void PackageDocuments::record(const PackageDocument& document, const base::Text& ksef_number,
                              const PackageOutcome& outcome, const base::DateTime& now) {
    const bool is_table = std::ranges::any_of(tables, [&](base::TextView table) {
        return base::equal_case_blind(table, document.table);
    });
    if (!is_table) return;
    const auto rows = database_.open(
        u"select top 1 DATA_OPERACJI,status_ksef,numer_ksef,Export_Opis_bledu_ksef from " +
        document.table + u" where " + base::Text(key_column) + u"=" + document.id);
    if (rows->at_end()) return;
    const base::Text known = text_in(*rows, Field::ksef_number);
    const base::Text status = text_in(*rows, Field::status);
    const bool stands_there = ksef_number.empty() ? !known.empty() || status == outcome.status
                                                  : known == ksef_number && !status.empty();
    if (!stands_there) write(*rows, ksef_number, outcome, now);
}

}  // namespace tavrix::ksef
