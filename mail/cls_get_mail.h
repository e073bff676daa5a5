#pragma once

#include <memory>

#include "base/secret.h"
#include "mail/cmessage.h"

namespace tavrix::mail {

/// The public class `ClsGetMail`: mail from a POP3 mailbox. No method raises.
class ClsGetMail {
  public:
    /// Empties the mailbox into the folder `Katalog`. Not built yet: False.
    bool cmdGetMail(const base::Text& host, std::int32_t port, const base::Text& user,
                    const base::SecretText& Pass, bool Delete, const base::Text& opis,
                    const base::Text& temat, const base::Text& Katalog) noexcept;

    /// Fetches the mailbox's first message. Not built yet: Nothing.
    std::shared_ptr<CMessage> cmdGetMailM(const base::Text& host, std::int32_t port,
                                          const base::Text& user, const base::SecretText& Pass,
                                          bool Delete, const base::Text& Katalog,
                                          bool czyssl) noexcept;
};

}  // namespace tavrix::mail
