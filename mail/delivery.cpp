#include "mail/delivery.h"

#include <algorithm>

#include "base/error.h"
#include "mail/pop3/refusal.h"

namespace tavrix::mail {
namespace {

[[noreturn]] void refuse_delivery(base::TextView why) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"Mail", base::Text(why));
}

smtp::Envelope envelope_of(const outgoing::Draft& draft, const std::string& notify) {
    smtp::Envelope envelope;
    envelope.sender = draft.from.address;
    envelope.notify = notify;
    envelope.needs_utf8 = !draft.from.is_ascii();
    for (const auto* list : {&draft.to, &draft.cc, &draft.bcc}) {
        for (const outgoing::Mailbox& mailbox : *list) {
            envelope.needs_utf8 = envelope.needs_utf8 || !mailbox.is_ascii();
            // Who is named twice gets one copy.
            if (std::ranges::find(envelope.recipients, mailbox.address) ==
                envelope.recipients.end()) {
                envelope.recipients.push_back(mailbox.address);
            }
        }
    }
    if (envelope.recipients.empty()) refuse_delivery(u"Nie podano adresata.");
    return envelope;
}

smtp::Server server_of(const Account& account) {
    if (account.port < 1 || account.port > 0xFFFF) {
        refuse_delivery(u"Nieprawidłowy port serwera: " + base::to_decimal(account.port));
    }
    const base::TextView host = base::trim(account.host);
    if (host.empty()) refuse_delivery(u"Nie podano serwera SMTP.");
    return {base::to_utf8(host), static_cast<std::uint16_t>(account.port), account.security};
}

smtp::Login login_of(const Account& account) {
    constexpr base::TextView ends_of_texts{u"\r\n\0", 3};
    if (account.user.find_first_of(ends_of_texts) != base::Text::npos) {
        refuse_delivery(u"Nieprawidłowa nazwa użytkownika.");
    }
    return {base::to_secret_utf8(account.user), base::to_secret_utf8(account.password.view())};
}

}  // namespace

ports::Security security_of(std::int32_t port, bool ssl) noexcept {
    constexpr std::int32_t submissions = 465;
    if (port == submissions) return ports::Security::tls;
    return ssl ? ports::Security::tls_after_starttls : ports::Security::none;
}

base::Text deliver(const DeliveryPorts& ports, const Account& account, const outgoing::Draft& draft,
                   const std::string& notify, smtp::SendingListener& listener) {
    smtp::Envelope envelope = envelope_of(draft, notify);
    const smtp::Server server = server_of(account);
    smtp::Login login = login_of(account);
    listener.on_stage(smtp::Stage::attaching_files);
    outgoing::OutgoingMessage message(draft, ports.composing);
    envelope.message_bytes = message.size();
    const ports::ConnectionSettings connection = ports.connection();
    const auto stream = ports.make_stream(connection);
    const auto greeting = server.security == ports::Security::tls_after_starttls
                              ? smtp::Greeting::past
                              : smtp::Greeting::expected;
    const smtp::Patience patience{.connect = connection.connect_timeout,
                                  .answer = connection.no_progress_timeout};
    listener.on_stage(smtp::Stage::sending);
    return explained_failure(
        smtp::send(*stream, server, smtp::Dialogue(std::move(envelope), std::move(login), greeting),
                   message, patience, listener));
}

}  // namespace tavrix::mail
