#pragma once

#include <optional>

#include "ksef/rows/columns.h"
#include "ports/database.h"

namespace tavrix::ksef {

/// What a package's end leaves in a document: status_ksef and Export_Opis_bledu_ksef.
struct PackageOutcome {
    base::TextView status;
    base::TextView note;
};

inline constexpr PackageOutcome package_accepted{u"201", u"OK."};
inline constexpr PackageOutcome package_failed{u"500", u"Failed"};
/// Hosts compare with these very letters.
inline constexpr PackageOutcome package_cancelled{u"500", u"Canseled"};

/// A row of one of the tables of documents.
struct PackageDocument {
    base::Text table;
    base::Text id;  ///< ddout_id
};

/// The sales invoices that hosts send in packages.
class PackageDocuments {
  public:
    explicit PackageDocuments(ports::Database& database) : database_(database) {}

    /// Writes the outcome and `ksef_number`, also an empty one, into the first invoice with that
    /// number and reference. False when there is none. Both stand in the statement as they are: one
    /// with an apostrophe fails the statement.
    bool record(const base::Text& document_number, const base::Text& reference,
                const base::Text& ksef_number, const PackageOutcome& outcome,
                const base::DateTime& now);

    /// The invoice with that hash. Several are copies of one; that with the reference comes first.
    std::optional<PackageDocument> find_by_hash(const base::Text& hash,
                                                const base::Text& reference);
    /// The invoice with that number. Of several it is the one with the reference, or none. One that
    /// has another KSeF number or hash is another invoice: numbers tell documents of one kind
    /// apart.
    std::optional<PackageDocument> find_by_number(const base::Text& number,
                                                  const base::Text& reference,
                                                  const base::Text& hash,
                                                  const base::Text& ksef_number);
    /// Writes the outcome and the number into one row. An invoice that has a KSeF number keeps it:
    /// a package that failed says nothing of the one that was sent after it. What stands there
    /// already is not written again. A row that is not there, or in a table that holds no
    /// documents, is nobody's.
    void record(const PackageDocument& document, const base::Text& ksef_number,
                const PackageOutcome& outcome, const base::DateTime& now);

  private:
    template <typename Fits>
    std::optional<PackageDocument> find(base::TextView column, const base::Text& value,
                                        const base::Text& reference, bool are_copies, Fits fits);

    ports::Database& database_;
};

}  // namespace tavrix::ksef
