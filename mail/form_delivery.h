#pragma once

#include "mail/delivery.h"
#include "mail/message_form.h"
#include "mail/settings.h"

namespace tavrix::mail {

/// Whether the message says which program and whose it comes from.
enum class Origin { told, withheld };

/// Sends what the message form shows, from the account of the settings. Gives the empty text when
/// it went, otherwise the reason; throws base::AutomationError for what cannot be tried.
base::Text deliver_record(const DeliveryPorts& ports, const FormAccount& account,
                          const MailRecord& record, Origin origin, smtp::SendingListener& listener);

}  // namespace tavrix::mail
