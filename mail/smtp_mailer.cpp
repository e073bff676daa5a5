#include "mail/smtp_mailer.h"

#include "base/error.h"

namespace tavrix::mail {

void SmtpMailer::send(const ports::InstantMail& mail) {
    outgoing::Draft draft;
    draft.from = outgoing::parse_mailbox(mail.from);
    draft.to = outgoing::parse_mailboxes(mail.to, u",;");
    draft.subject = mail.subject;
    (mail.body_is_html ? draft.html : draft.body) = mail.body;
    if (!mail.file.empty()) draft.files.push_back(mail.file);
    // Hosts have no 16 bits without a sign.
    const auto port = static_cast<std::uint16_t>(mail.port);
    const Account account{mail.server, port, security_of(port, mail.ssl), mail.user,
                          mail.password.copy()};
    DeliveryPorts ports = ports_;
    ports.connection = [this] {
        ports::ConnectionSettings connection = ports_.connection();
        connection.connect_timeout = std::chrono::seconds(30);
        return connection;
    };
    Unheard nobody;
    const base::Text failure = deliver(ports, account, draft, {}, nobody);
    if (failure.empty()) return;
    throw base::AutomationError(base::ErrorNumber::component_failed, u"SMTP", failure);
}

}  // namespace tavrix::mail
