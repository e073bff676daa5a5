#include "dialogs/printer_choice.h"

#include <algorithm>

namespace tavrix::dialogs {

PrinterChoiceForm printer_choice_form(const ports::PrinterList& list) {
    PrinterChoiceForm form;
    if (list.names.empty()) {
        form.note = list.service_answers ? u"Brak zainstalowanych drukarek."
                                         : u"Usługa drukowania systemu Windows nie odpowiada.";
        return form;
    }
    std::vector<base::Text> names = list.names;
    std::ranges::sort(names, [](const base::Text& left, const base::Text& right) {
        return std::ranges::lexicographical_compare(left, right, {}, base::upper, base::upper);
    });
    form.chosen = 0;
    for (const base::Text& name : names) {
        const bool is_default = name == list.default_name;
        if (is_default) form.chosen = form.rows.size();
        form.rows.push_back({name, is_default ? name + u" (domyślna)" : name});
    }
    return form;
}

}  // namespace tavrix::dialogs
