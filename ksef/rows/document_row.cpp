#include "ksef/rows/document_row.h"

#include <span>

#include "ksef/rows/fields.h"

namespace tavrix::ksef {
namespace {

using enum Field;

// What each query selects, in the order in which the hosts' databases have always seen it.
constexpr Field read_query[] = {ksef_number, issue_date, reference, hash};
constexpr Field outcome_query[] = {operation_time, issue_date, description, status, reference, upo,
                                   ksef_number,    hash,       note};
constexpr Field number_query[] = {operation_time, ksef_number, status, upo, note};
constexpr Field upo_query[] = {operation_time, ksef_number, status, upo};
constexpr Field offline_query[] = {xml, hash, issue_date, certificate_link, operation_time};

// status_ksef of an accepted invoice and the text beside it.
constexpr base::TextView accepted_code = u"200";
constexpr base::TextView accepted_note = u"OK.";

base::Text select_list(std::span<const Field> fields) {
    base::Text list;
    for (const Field field : fields) {
        if (!list.empty()) list += u',';
        list += column_of(field).name;
    }
    return list;
}

ports::Value value_of(ports::Recordset& rows, Field field) {
    return rows.field(column_of(field).name);
}

}  // namespace

base::Text DocumentRow::name() const {
    return table_ + u" where " + base::Text(key_column) + u"=" + base::to_decimal(id_);
}

std::unique_ptr<ports::Recordset> DocumentRow::open(std::span<const Field> fields) {
    return database_.open(u"select top 1 " + select_list(fields) + u" from " + name());
}

void DocumentRow::write(std::span<const Field> query, std::initializer_list<Change> changes,
                        const base::DateTime& now) {
    const auto rows = open(query);
    for (const auto& [field, value] : changes) {
        // A number is replaced by another one, never taken away.
        if (field == ksef_number && value.empty()) continue;
        const Column& column = column_of(field);
        const bool may_be_cut = column.kind == ColumnKind::description;
        rows->set_field(column.name,
                        base::Text(may_be_cut ? fitting(*rows, column.name, value) : value));
    }
    rows->set_field(column_of(operation_time).name, now);
    rows->update_batch();
}

std::optional<DocumentRow::Sent> DocumentRow::read() {
    const auto rows = open(read_query);
    if (rows->at_end()) return std::nullopt;
    return Sent{ports::text_of(value_of(*rows, ksef_number)),
                ports::date_of(value_of(*rows, issue_date)),
                ports::text_of(value_of(*rows, reference)), ports::text_of(value_of(*rows, hash))};
}

void DocumentRow::record(const Outcome& outcome, const base::DateTime& now) {
    write(outcome_query,
          {{reference, outcome.reference},
           {ksef_number, outcome.ksef_number},
           {status, accepted_code},
           {note, accepted_note},
           {hash, outcome.hash},
           {description, outcome.description}},
          now);
}

void DocumentRow::record_number(const base::Text& number, const base::DateTime& now) {
    write(number_query, {{ksef_number, number}, {status, accepted_code}, {note, accepted_note}},
          now);
}

void DocumentRow::record_upo(const base::Text& document, const base::DateTime& now) {
    write(upo_query, {{upo, document}}, now);
}

std::optional<base::Text> DocumentRow::read_hash() {
    const auto rows = open(offline_query);
    if (rows->at_end()) return std::nullopt;
    const ports::Value value = value_of(*rows, hash);
    if (std::holds_alternative<std::monostate>(value)) return std::nullopt;
    return ports::text_of(value);
}

void DocumentRow::record_certificate_link(const base::Text& link, const base::DateTime& now) {
    write(offline_query, {{certificate_link, link}}, now);
}

}  // namespace tavrix::ksef
