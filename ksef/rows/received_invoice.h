#pragma once

#include "ports/database.h"

namespace tavrix::ksef {

/// An invoice that the service lists, as a row of DOK_ZDJECIA tells of it.
struct ReceivedInvoice {
    base::Text ksef_number;
    base::Text number;
    base::DateTime issued;
    base::DateTime stored;
    base::Text seller_tax_number;
    base::Text net;  ///< with a decimal comma, all digits
    base::Text vat;
    base::Text hash;
    base::Text json;  ///< the whole entry
    std::int32_t document_kind = 0;
    base::TextView direction;
    std::int32_t product_group = 0;
    ports::Value contractor;  ///< konh_id; null for none
};

/// The host's table of invoices that were seen in the service.
class ReceivedInvoices {
  public:
    explicit ReceivedInvoices(ports::Database& database) : database_(database) {}

    bool has(const base::Text& ksef_number, std::int32_t document_kind);
    /// Adds a row, whole or not at all.
    void add(const ReceivedInvoice& invoice, const base::DateTime& now);

  private:
    ports::Database& database_;
};

}  // namespace tavrix::ksef
