#include "ksef/rows/user_setting.h"

namespace tavrix::ksef {

base::SecretUtf8 user_setting(ports::Database& database, base::TextView name, std::int32_t user) {
    const auto rows = database.open(u"select top 1 wartosc from uzytkownicy_setup where nazwa='" +
                                    base::Text(name) + u"' and user_id=" + base::to_decimal(user));
    if (rows->at_end()) return {};
    ports::Value value = rows->field(u"wartosc");
    auto* const text = std::get_if<base::Text>(&value);
    if (text == nullptr) return base::to_secret_utf8(ports::text_of(value));
    base::SecretUtf8 setting = base::to_secret_utf8(*text);
    base::wipe(text->data(), text->size() * sizeof(char16_t));
    return setting;
}

}  // namespace tavrix::ksef
