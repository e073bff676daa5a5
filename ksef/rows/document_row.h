#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>

#include "base/date_time.h"
#include "ksef/rows/columns.h"
#include "ports/database.h"

namespace tavrix::ksef {

/// One document of the host with its KSeF columns: the row of `table` whose ddout_id is `id`. Every
/// function runs its own query; those that write throw base::AutomationError when the row is gone,
/// and then nothing is written.
class DocumentRow {
  public:
    DocumentRow(ports::Database& database, const base::Text& table, std::int32_t id)
        : database_(database), table_(table), id_(id) {}

    struct Sent {
        base::Text ksef_number;
        std::optional<base::DateTime> issue_date;
        base::Text reference;
        base::Text hash;
    };
    struct Outcome {
        base::Text reference;
        base::Text ksef_number;
        base::Text hash;
        base::Text description;
    };

    /// What is known of earlier sendings; nothing when there is no such row.
    std::optional<Sent> read();
    /// Stores an accepted invoice's number, reference and hash. A number that is empty leaves the
    /// one that is there, here and below.
    void record(const Outcome& outcome, const base::DateTime& now);
    void record_number(const base::Text& number, const base::DateTime& now);
    void record_upo(const base::Text& document, const base::DateTime& now);
    /// The hash of the invoice; nothing when there is no such row or the hash is null.
    std::optional<base::Text> read_hash();
    void record_certificate_link(const base::Text& link, const base::DateTime& now);
    /// "TABLE where ddout_id=ID", as failure texts and queries name the row.
    base::Text name() const;

  private:
    struct Change {
        Field field;
        base::TextView value;
    };

    std::unique_ptr<ports::Recordset> open(std::span<const Field> fields);
    /// Writes the changes and the time.
    void write(std::span<const Field> query, std::initializer_list<Change> changes,
               const base::DateTime& now);

    ports::Database& database_;
    const base::Text& table_;
    std::int32_t id_;
};

}  // namespace tavrix::ksef
