#pragma once

#include <cstdint>
#include <optional>

#include "base/secret.h"

namespace tavrix::mail {

/// Any value of a host as text; nothing for Null, Empty and what has no text.
struct NullableText {
    std::optional<base::Text> text;
};

/// The public class `ClsSendMail`: mail over SMTP. No method raises.
class ClsSendMail {
  public:
    /// The value's text; the empty text for a null or empty one.
    base::Text NullStr(const NullableText& ds) const { return ds.text.value_or(base::Text()); }

    /// Sends one message; "" when it went. Not built yet: "Nieznany błąd".
    base::Text sendmail(const base::Text& dokogo, const base::Text& temat, const base::Text& odkogo,
                        const base::Text& Body, const base::Text& smtphost, std::int32_t smtpport,
                        const base::Text& smtpuser, const base::SecretText& smtppass,
                        const base::Text& Plik, std::int32_t ssl, const base::Text& maildw,
                        const base::Text& htmlBody, const base::Text& mailudw,
                        const base::Text& DeliveryNotificationOptions, const base::Text& Priority,
                        const base::Text& ReplyTo, const base::Text& sender) const;
};

}  // namespace tavrix::mail
