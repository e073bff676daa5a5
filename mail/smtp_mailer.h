#pragma once

#include "mail/delivery.h"
#include "ports/instant_mail.h"

namespace tavrix::mail {

/// Sends over SMTP what the platform's own sender, where there is one, would: addresses between
/// "," or ";", HTML together with the plain text that is made of it, 30 seconds for connecting.
class SmtpMailer final : public ports::InstantMailer {
  public:
    explicit SmtpMailer(DeliveryPorts ports) : ports_(std::move(ports)) {}
    void send(const ports::InstantMail& mail) override;

  private:
    DeliveryPorts ports_;
};

}  // namespace tavrix::mail
