#include "mail/cmessage.h"

#include "mail/literal/dodaj_mail.h"
#include "mail/received_message.h"

namespace tavrix::mail {

std::int32_t CMessage::Size() const noexcept {
    return static_cast<std::int32_t>(record_[MessageProperty::MessageText].size());
}

std::int32_t CMessage::DodajMail(const base::Text& strMessage, const base::Text& GM_Katalog,
                                 bool GM_DoplikuTylkoZałączniki) noexcept {
    try {
        DodajMailReader reader(record_, ports_, ports_.profile());
        const std::int32_t result = reader.read(strMessage, GM_Katalog, GM_DoplikuTylkoZałączniki);
        was_read_to_its_end_ = reader.was_read_to_its_end();
        return result;
    } catch (...) {
        return 0;
    }
}

bool CMessage::take(base::ByteView message, const base::Text& folder, bool keep_whole) {
    return take_received_message(message, folder, keep_whole, ports_, record_);
}

}  // namespace tavrix::mail
