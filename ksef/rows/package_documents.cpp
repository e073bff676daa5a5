#include "ksef/rows/package_documents.h"

#include "ksef/rows/fields.h"

namespace tavrix::ksef {
namespace {

// The one table of those that hosts send in packages: they close corrections and donations by hand.
constexpr base::TextView table = u"dok_fak";

}  // namespace

bool PackageDocuments::record(const base::Text& document_number, const base::Text& reference,
                              const base::Text& ksef_number, const PackageOutcome& outcome,
                              const base::DateTime& now) {
    const auto rows = database_.open(
        u"select DATA_OPERACJI,status_ksef,NumerRef_ksef,UPO_ksef,numer_ksef,"
        u"Export_Opis_bledu_ksef from " +
        base::Text(table) + u" where ddout_numer='" + document_number + u"' and NumerRef_ksef='" +
        reference + u"' ");
    if (rows->at_end()) return false;
    const base::TextView note = column_of(Field::note).name;
    rows->set_field(column_of(Field::ksef_number).name, ksef_number);
    rows->set_field(column_of(Field::status).name, base::Text(outcome.status));
    rows->set_field(note, base::Text(fitting(*rows, note, outcome.note)));
    rows->set_field(column_of(Field::operation_time).name, now);
    rows->update_batch();
    return true;
}

}  // namespace tavrix::ksef
