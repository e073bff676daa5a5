#pragma once

#include <map>
#include <optional>

#include "ports/database.h"

namespace tavrix::ksef {

struct Contractor {
    ports::Value id;  ///< konh_id
    bool exchanges_through_ksef = false;
};

/// The host's contractors, by tax number. A number is looked up once.
class Contractors {
  public:
    explicit Contractors(ports::Database& database) : database_(database) {}

    /// The contractor with that tax number, however it is grouped there: of the register "KD"
    /// before "KX", but an active one before any other. Nothing for an unknown or empty number.
    std::optional<Contractor> find(const base::Text& tax_number);

  private:
    std::optional<Contractor> look_up(const base::Text& tax_number);

    ports::Database& database_;
    std::map<base::Text, std::optional<Contractor>> known_;
};

}  // namespace tavrix::ksef
