#include "mail/cls_send_mail.h"

#include "base/error.h"
#include "mail/outgoing/notification.h"

namespace tavrix::mail {

using base::Text;

Text ClsSendMail::sendmail(const Text& dokogo, const Text& temat, const Text& odkogo,
                           const Text& Body, const Text& smtphost, std::int32_t smtpport,
                           const Text& smtpuser, const base::SecretText& smtppass, const Text& Plik,
                           std::int32_t ssl, const Text& maildw, const Text& htmlBody,
                           const Text& mailudw, const Text& DeliveryNotificationOptions,
                           const Text& Priority, const Text& ReplyTo, const Text& sender) const {
    Text result = u"Nieznany błąd";
    try {
        outgoing::Draft draft;
        draft.from = outgoing::parse_mailbox(odkogo);
        draft.to = outgoing::parse_mailboxes(dokogo, u";");
        draft.cc = outgoing::parse_mailboxes(maildw, u";");
        draft.bcc = outgoing::parse_mailboxes(mailudw, u";");
        draft.subject = temat;
        draft.body = Body;
        draft.html = htmlBody;
        draft.priority = Priority;
        draft.reply_to = ReplyTo;
        draft.sender = sender;
        for (const Text& path : base::split(Plik, u';')) {
            if (!path.empty()) draft.files.push_back(path);
        }
        outgoing::Notification wanted = outgoing::read_notification(DeliveryNotificationOptions);
        draft.receipt_to = std::move(wanted.receipt_to);
        const Account account{smtphost, smtpport, security_of(smtpport, ssl != 0), smtpuser,
                              smtppass.copy()};
        Unheard nobody;
        result = deliver(ports_, account, draft, wanted.notify, nobody);
    } catch (const base::AutomationError& error) {
        result = error.description().empty() ? Text(u"Bład nieznzany") : error.description();
    } catch (...) {
        // Out of memory has no words.
        result = u"Bład nieznzany";
    }
    return result;
}

}  // namespace tavrix::mail
