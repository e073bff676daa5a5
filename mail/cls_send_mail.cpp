#include "mail/cls_send_mail.h"

namespace tavrix::mail {

using base::Text;

Text ClsSendMail::sendmail(const Text& /*dokogo*/, const Text& /*temat*/, const Text& /*odkogo*/,
                           const Text& /*Body*/, const Text& /*smtphost*/,
                           std::int32_t /*smtpport*/, const Text& /*smtpuser*/,
                           const base::SecretText& /*smtppass*/, const Text& /*Plik*/,
                           std::int32_t /*ssl*/, const Text& /*maildw*/, const Text& /*htmlBody*/,
                           const Text& /*mailudw*/, const Text& /*DeliveryNotificationOptions*/,
                           const Text& /*Priority*/, const Text& /*ReplyTo*/,
                           const Text& /*sender*/) const {
    return u"Nieznany błąd";
}

}  // namespace tavrix::mail
