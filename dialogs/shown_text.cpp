#include "dialogs/shown_text.h"

namespace tavrix::dialogs {

base::Text with_edit_line_ends(base::TextView text) {
    const base::Text plain = base::replace_all(text, u"\r\n", u"\n");
    return base::replace_all(base::replace_all(plain, u"\r", u"\n"), u"\n", u"\r\n");
}

}  // namespace tavrix::dialogs
