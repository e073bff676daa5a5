#include "ksef/rows/document_row.h"

namespace tavrix::ksef {
namespace {

// status_ksef of an accepted invoice and the text beside it.
constexpr std::u16string_view accepted_code = u"200";
constexpr std::u16string_view accepted_note = u"OK.";

void set(ports::Recordset& rows, base::TextView column, base::TextView value) {
    rows.set_field(column, base::Text(value));
}

}  // namespace

base::Text DocumentRow::name() const {
    return table_ + u" where ddout_id=" + base::to_decimal(id_);
}

std::unique_ptr<ports::Recordset> DocumentRow::open(base::TextView columns) {
    return database_.open(u"select top 1 " + base::Text(columns) + u" from " + name());
}

std::optional<DocumentRow::Sent> DocumentRow::read() {
    const auto rows = open(u"numer_ksef,ddout_data_wyst,NumerRef_ksef,HashFaktury");
    if (rows->at_end()) return std::nullopt;
    return Sent{
        ports::text_of(rows->field(u"numer_ksef")), ports::date_of(rows->field(u"ddout_data_wyst")),
        ports::text_of(rows->field(u"numerref_ksef")), ports::text_of(rows->field(u"HashFaktury"))};
}

void DocumentRow::record(const Outcome& outcome, const base::DateTime& now) {
    const auto rows = open(
        u"DATA_OPERACJI,ddout_data_wyst,StatusStr_ksef,status_ksef,NumerRef_ksef,UPO_ksef,numer_"
        u"ksef,HashFaktury,"
        u"Export_Opis_bledu_ksef");
    set(*rows, u"NumerRef_ksef", outcome.reference);
    set(*rows, u"numer_ksef", outcome.ksef_number);
    set(*rows, u"status_ksef", accepted_code);
    set(*rows, u"Export_Opis_bledu_ksef", accepted_note);
    set(*rows, u"HashFaktury", outcome.hash);
    set(*rows, u"StatusStr_ksef", outcome.description);
    rows->set_field(u"DATA_OPERACJI", now);
    rows->update_batch();
}

void DocumentRow::record_number(const base::Text& ksef_number, const base::DateTime& now) {
    const auto rows = open(u"DATA_OPERACJI,numer_ksef,status_ksef,UPO_ksef,Export_Opis_bledu_ksef");
    set(*rows, u"numer_ksef", ksef_number);
    set(*rows, u"status_ksef", accepted_code);
    set(*rows, u"Export_Opis_bledu_ksef", accepted_note);
    rows->set_field(u"DATA_OPERACJI", now);
    rows->update_batch();
}

void DocumentRow::record_upo(const base::Text& upo, const base::DateTime& now) {
    const auto rows = open(u"DATA_OPERACJI,numer_ksef,status_ksef,UPO_ksef");
    set(*rows, u"upo_ksef", upo);
    rows->set_field(u"DATA_OPERACJI", now);
    rows->update_batch();
}

}  // namespace tavrix::ksef
