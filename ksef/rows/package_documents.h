#pragma once

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

  private:
    ports::Database& database_;
};

}  // namespace tavrix::ksef
