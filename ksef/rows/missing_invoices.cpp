#include "ksef/rows/missing_invoices.h"

#include "ksef/rows/fields.h"

namespace tavrix::ksef {

MissingInvoices::MissingInvoices(ports::Database& database)
    : rows_(database.open(
          u"select ksefNumber,dane,ksefniezgodnyidwew,countt,In_Konh_id,In_idwew,In_rolainna,"
          u"In_podmiot3zawiera,In_nrdok,In_NEtto,In_Vat from DOK_ZDJECIA where "
          u"(ksefniezgodnyidwew is null or ksefniezgodnyidwew=0 or ksefniezgodnyidwew=-3) and  "
          u"ksefNumber<>'' and (dane is null or dane='') and (ZDJECIE_kierunek='ksef_IN' or "
          u"ZDJECIE_kierunek='ksef_OWN')")) {}

ApprovalQuestion MissingInvoices::what_rules_ask() {
    return {text(u"In_Konh_id"), text(u"In_idwew"), text(u"In_rolainna"),
            text(u"In_podmiot3zawiera"), text(u"In_nrdok")};
}

void MissingInvoices::store(const base::Text& xml, base::TextView identifier,
                            std::int64_t verdict) {
    rows_->set_field(u"dane", xml);
    rows_->set_field(u"In_idwew", base::Text(fitting(*rows_, u"In_idwew", identifier)));
    rows_->set_field(u"ksefniezgodnyidwew", verdict);
    rows_->update_batch();
}

}  // namespace tavrix::ksef
