#include "ksef/rows/fields.h"

namespace tavrix::ksef {

base::TextView fitting(ports::Recordset& rows, base::TextView column, base::TextView text) {
    const std::size_t capacity = rows.capacity(column);
    if (text.size() <= capacity) return text;
    const bool splits_pair =
        capacity > 0 && text[capacity - 1] >= 0xD800 && text[capacity - 1] <= 0xDBFF;
    return text.substr(0, splits_pair ? capacity - 1 : capacity);
}

base::Text sql_literal(base::TextView text) {
    return u'\'' + base::replace_all(text, u"'", u"''") + u'\'';
}

}  // namespace tavrix::ksef
