#pragma once

#include <array>
#include <cstddef>

#include "base/text.h"

namespace tavrix::ksef {

/// The columns of a host's document table that the library knows. A new one is added here, and to
/// the queries of document_row.cpp that need it.
enum class Field {
    issue_date,
    ksef_number,
    reference,
    hash,
    status,
    description,
    note,
    operation_time,
    upo,
    xml,
    certificate_link,
};

/// A description is the service's free text: what the host's column has no room for is left out.
enum class ColumnKind { text, description, date };
/// `offline` is the library too, but for an invoice issued while KSeF cannot be reached.
enum class Writer { host, library, offline };

struct Column {
    Field field;
    base::TextView name;
    ColumnKind kind;
    Writer writer;
};

inline constexpr base::TextView key_column = u"ddout_id";

/// In the order of Field, which is how `tavrix send` lists them.
inline constexpr std::array document_columns = {
    Column{Field::issue_date, u"ddout_data_wyst", ColumnKind::date, Writer::host},
    Column{Field::ksef_number, u"numer_ksef", ColumnKind::text, Writer::library},
    Column{Field::reference, u"NumerRef_ksef", ColumnKind::text, Writer::library},
    Column{Field::hash, u"HashFaktury", ColumnKind::text, Writer::library},
    Column{Field::status, u"status_ksef", ColumnKind::text, Writer::library},
    Column{Field::description, u"StatusStr_ksef", ColumnKind::description, Writer::library},
    Column{Field::note, u"Export_Opis_bledu_ksef", ColumnKind::description, Writer::library},
    Column{Field::operation_time, u"DATA_OPERACJI", ColumnKind::date, Writer::library},
    Column{Field::upo, u"UPO_ksef", ColumnKind::text, Writer::library},
    Column{Field::xml, u"xml_ksef", ColumnKind::text, Writer::host},
    Column{Field::certificate_link, u"ksef_qrcode2", ColumnKind::text, Writer::offline},
};

constexpr const Column& column_of(Field field) {
    return document_columns[static_cast<std::size_t>(field)];
}

static_assert(
    [] {
        for (std::size_t i = 0; i < document_columns.size(); ++i) {
            if (document_columns[i].field != static_cast<Field>(i)) return false;
        }
        return true;
    }(),
    "the columns stand in the order of Field");

}  // namespace tavrix::ksef
