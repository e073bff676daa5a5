#pragma once

#include <vector>

#include "base/text.h"

namespace tavrix::ports {

struct PrinterList {
    /// Whole, as hosts and devices are named: "\\server\printer" with its server.
    std::vector<base::Text> names;
    /// Empty when there is none.
    base::Text default_name;
    /// False when the system's print service does not run: then nothing is known.
    bool service_answers = true;
};

/// The printers that the current user has.
class Printers {
  public:
    virtual ~Printers() = default;
    /// At once: no printer and no server is asked. Throws std::bad_alloc only.
    virtual PrinterList list() = 0;
};

}  // namespace tavrix::ports
