#include "ksef/rows/received_invoice.h"

#include "ksef/rows/fields.h"

namespace tavrix::ksef {
namespace {

// ksefniezgodnyidwew of an invoice whose XML was not looked at yet.
constexpr std::int64_t not_checked = -3;

struct Cell {
    base::TextView column;
    ports::Value value;
};

}  // namespace

bool ReceivedInvoices::has(const base::Text& ksef_number, std::int32_t document_kind) {
    return !database_
                .open(u"select top 1 * from DOK_ZDJECIA where ksefNumber=" +
                      sql_literal(ksef_number) + u" and dok_rodz_id=" +
                      base::to_decimal(document_kind))
                ->at_end();
}

void ReceivedInvoices::add(const ReceivedInvoice& invoice, const base::DateTime& now) {
    const Cell cells[] = {
        {u"in_id_grprod", std::int64_t{invoice.product_group}},
        {u"ksefniezgodnyidwew", not_checked},
        {u"ksefNumber", invoice.ksef_number},
        {u"in_numer_ksef", invoice.ksef_number},
        {u"ksefNumber_json", invoice.json},
        {u"ksefHashFaktury", invoice.hash},
        {u"In_Konh_id", invoice.contractor},
        {u"dok_rodz_id", std::int64_t{invoice.document_kind}},
        {u"dok_ID", std::int64_t{0}},
        {u"data", invoice.stored},
        {u"In_Data_Wyst", invoice.issued},
        {u"In_nrdok", invoice.number},
        {u"In_NEtto", invoice.net},
        {u"In_Vat", invoice.vat},
        {u"In_nip", invoice.seller_tax_number},
        {u"ZDJECIE_NAZWAPLIKU", invoice.ksef_number},
        {u"ZDJECIE_datawydruku", now},
        {u"ZDJECIE_RODZAJ", base::Text(u"xml")},
        {u"ZDJECIE_kierunek", base::Text(invoice.direction)},
    };
    base::Text columns;
    for (const Cell& cell : cells) {
        if (!columns.empty()) columns += u',';
        columns += cell.column;
    }
    // Only what is written: ADO cannot add a row to a recordset that holds a date column which is
    // left to its default.
    const auto rows = database_.open(u"select " + columns + u" from DOK_ZDJECIA where 1=0");
    rows->add_new();
    for (const Cell& cell : cells) {
        const bool is_null = std::holds_alternative<std::monostate>(cell.value);
        if (!is_null) rows->set_field(cell.column, cell.value);
    }
    rows->update_batch();
}

}  // namespace tavrix::ksef
