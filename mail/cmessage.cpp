#include "mail/cmessage.h"

namespace tavrix::mail {

std::int32_t CMessage::Size() const noexcept {
    return static_cast<std::int32_t>(text<MessageProperty::MessageText>().size());
}

std::int32_t CMessage::DodajMail(const base::Text& /*strMessage*/, const base::Text& /*GM_Katalog*/,
                                 bool /*GM_DoplikuTylkoZałączniki*/) noexcept {
    return 0;
}

}  // namespace tavrix::mail
