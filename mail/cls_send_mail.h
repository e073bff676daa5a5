#pragma once

#include <cstdint>
#include <optional>

#include "base/secret.h"
#include "mail/delivery.h"

namespace tavrix::mail {

/// Any value of a host as text; nothing for Null, Empty and what has no text.
struct NullableText {
    std::optional<base::Text> text;
};

/// The public class `ClsSendMail`: mail over SMTP. No method raises.
class ClsSendMail {
  public:
    explicit ClsSendMail(DeliveryPorts ports) : ports_(std::move(ports)) {}

    /// The value's text; the empty text for a null or empty one.
    base::Text NullStr(const NullableText& ds) const { return ds.text.value_or(base::Text()); }

    /// Sends one message to all recipients or, when one of them is refused, to nobody. Gives ""
    /// when it went, otherwise the reason, which names who was refused and repeats what the server
    /// said; "Bład nieznzany" for one without words.
    ///
    /// `dokogo`, `maildw` and `mailudw` (which nobody sees) are addresses, `Plik` paths, each
    /// separated by ";". `odkogo`, and every address, may have a name: "Jan <jan@firma.pl>". `ssl`
    /// that is not 0 asks for TLS: from the first byte on port 465, which is never used without,
    /// elsewhere by STARTTLS, and a server without it gets nothing. With `htmlBody` the message has
    /// both bodies. `DeliveryNotificationOptions` is NEVER or a list of SUCCESS, FAILURE and DELAY,
    /// or CDO's numbers for them (1, 2, 4, 8), for servers that offer notifications; an address
    /// asks the reader's program for a receipt to it. `sender` becomes a header field of its own
    /// where it is not `odkogo`'s address.
    base::Text sendmail(const base::Text& dokogo, const base::Text& temat, const base::Text& odkogo,
                        const base::Text& Body, const base::Text& smtphost, std::int32_t smtpport,
                        const base::Text& smtpuser, const base::SecretText& smtppass,
                        const base::Text& Plik, std::int32_t ssl, const base::Text& maildw,
                        const base::Text& htmlBody, const base::Text& mailudw,
                        const base::Text& DeliveryNotificationOptions, const base::Text& Priority,
                        const base::Text& ReplyTo, const base::Text& sender) const;

  private:
    DeliveryPorts ports_;
};

}  // namespace tavrix::mail
