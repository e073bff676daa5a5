#pragma once

#include "ports/locale.h"

namespace tavrix::windows {

/// What the user chose in the system's regional settings.
class UserLocale final : public ports::Locale {
  public:
    base::Text general_date(const base::DateTime& moment) override;
};

}  // namespace tavrix::windows
