#include "ports/windows/adapters.h"

#include "windows/bstr.h"
#include "windows/failure.h"

namespace tavrix::ports {
namespace {

class UserLocale final : public Locale {
  public:
    base::Text general_date(const base::DateTime& moment) override {
        windows::Bstr text;
        windows::check(
            VarBstrFromDate(base::to_automation_date(moment), LOCALE_USER_DEFAULT, 0, text.out()),
            u"VarBstrFromDate");
        return base::Text(windows::view_of(text.get()));
    }
};

}  // namespace

std::unique_ptr<Locale> make_windows_locale() {
    return std::make_unique<UserLocale>();
}

}  // namespace tavrix::ports
