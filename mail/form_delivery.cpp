#include "mail/form_delivery.h"

#include "base/error.h"

namespace tavrix::mail {
namespace {

base::Text body_of(const MailRecord& record, Origin origin) {
    base::Text body;
    for (const base::Text& text : record.body) {
        if (!text.empty()) body += text + u"\r\n";
    }
    if (origin == Origin::withheld) return body;
    const struct {
        base::TextView what;
        const base::Text& value;
    } lines[] = {{u"\r\nŹródło: ", record.source},
                 {u"\r\nNIP: ", record.tax_number},
                 {u"\r\nWersja: ", record.host_version}};
    for (const auto& line : lines) {
        if (!line.value.empty()) body.append(line.what).append(line.value);
    }
    return body;
}

}  // namespace

base::TextView words_of(smtp::Stage stage) noexcept {
    switch (stage) {
        case smtp::Stage::attaching_files:
            return u"Podpinam Pliki";
        case smtp::Stage::sending:
            return u"Wysyłam";
        case smtp::Stage::leaving:
            return u"Wylogowuje";
        case smtp::Stage::sent:
            return u"Wysłano";
    }
    return {};
}

base::Text deliver_record(const DeliveryPorts& ports, const FormAccount& account,
                          const MailRecord& record, Origin origin,
                          smtp::SendingListener& listener) {
    if (account.server.empty()) {
        throw base::AutomationError(base::ErrorNumber::component_failed, u"Mail",
                                    u"W pliku ustawień nie ma serwera poczty (mail.smtp_server).");
    }
    outgoing::Draft draft;
    draft.from = outgoing::parse_mailbox(record.sender.empty() ? account.sender : record.sender);
    draft.to = outgoing::parse_mailboxes(record.recipients, u";");
    draft.subject = record.subject;
    draft.body = body_of(record, origin);
    for (const base::Text& path : base::split(record.attachments, u';')) {
        if (!path.empty()) draft.files.push_back(path);
    }
    return deliver(ports,
                   {account.server, account.port, security_of(account.port, account.ssl),
                    account.user, account.password.copy()},
                   draft, {}, listener);
}

}  // namespace tavrix::mail
