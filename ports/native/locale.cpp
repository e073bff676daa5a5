#include "ports/native/adapters.h"

namespace tavrix::ports {
namespace {

class PolishLocale final : public Locale {
  public:
    base::Text general_date(const base::DateTime& moment) override {
        const bool midnight = moment.hour == 0 && moment.minute == 0 && moment.second == 0;
        return midnight ? base::format_date(moment) : base::format_date_time(moment);
    }
};

}  // namespace

std::unique_ptr<Locale> make_native_locale() {
    return std::make_unique<PolishLocale>();
}

}  // namespace tavrix::ports
