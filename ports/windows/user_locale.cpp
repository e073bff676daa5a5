#include "ports/windows/user_locale.h"

#include "windows/bstr.h"
#include "windows/failure.h"

namespace tavrix::windows {

base::Text UserLocale::general_date(const base::DateTime& moment) {
    Bstr text;
    check(VarBstrFromDate(base::to_automation_date(moment), LOCALE_USER_DEFAULT, 0, text.out()),
          u"VarBstrFromDate");
    return base::Text(view_of(text.get()));
}

}  // namespace tavrix::windows
