#include "ksef/rows/missing_invoices.h"

#include "base/error.h"
#include "ksef/rows/fields.h"

namespace tavrix::ksef {

MissingInvoices::MissingInvoices(ports::Database& database)
    : database_(database),
      rows_(database.open(
          u"select ksefNumber,dane,ksefniezgodnyidwew,countt,In_Konh_id,In_idwew,In_rolainna,"
          u"In_podmiot3zawiera,In_nrdok,In_NEtto,In_Vat from DOK_ZDJECIA where "
          u"(ksefniezgodnyidwew is null or ksefniezgodnyidwew=0 or ksefniezgodnyidwew=-3) and  "
          u"ksefNumber<>'' and (dane is null or dane='') and (ZDJECIE_kierunek='ksef_IN' or "
          u"ZDJECIE_kierunek='ksef_OWN')")) {}

std::unique_ptr<ports::Recordset> MissingInvoices::own_row(base::TextView columns) {
    return database_.open(u"select top 1 " + base::Text(columns) +
                          u" from DOK_ZDJECIA where countt=" + id());
}

base::Text MissingInvoices::hash() {
    const auto row = own_row(u"ksefHashFaktury");
    return row->at_end() ? base::Text() : ports::text_of(row->field(u"ksefHashFaktury"));
}

ApprovalQuestion MissingInvoices::store(const base::Text& xml, base::TextView identifier,
                                        std::int64_t verdict) {
    const auto row = own_row(u"dane,In_idwew,ksefniezgodnyidwew");
    const base::Text fitted(fitting(*row, u"In_idwew", identifier));
    // Read before anything is written: nobody asks again for an invoice that has its document.
    ApprovalQuestion question{text(u"In_Konh_id"), fitted, text(u"In_rolainna"),
                              text(u"In_podmiot3zawiera"), text(u"In_nrdok")};
    row->set_field(u"dane", xml);
    row->set_field(u"In_idwew", fitted);
    row->set_field(u"ksefniezgodnyidwew", verdict);
    try {
        row->update_batch();
    } catch (const base::AutomationError&) {
        const auto stored = own_row(u"dane");
        if (stored->at_end() || ports::text_of(stored->field(u"dane")) != xml) throw;
    }
    return question;
}

}  // namespace tavrix::ksef
