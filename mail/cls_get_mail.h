#pragma once

#include <functional>
#include <memory>

#include "base/secret.h"
#include "mail/pop3/retrieval.h"
#include "ports/file_store.h"

namespace tavrix::mail {

/// Everything outside that the class reaches. The references outlive the instance.
struct GetMailPorts {
    RetrievalWindow& window;
    ports::FileStore& files;
    ports::Trace& trace;
    /// What one retrieval of this form needs. For the manager it throws base::AutomationError when
    /// there can be none, beside a settings file that cannot be read; the socket form's needs no
    /// settings.
    std::function<RetrievalPorts(RetrievalForm)> for_retrieval;
    /// The library's own.
    RetrievalSettings& settings;
};

/// The public class `ClsGetMail`: mail from a POP3 mailbox. Each connection shows the retrieval
/// form and brings one message. No method raises.
///
/// Where the mail manager cannot be made the socket form serves, unless the connection has to go
/// through TLS, which that form does not know: a password asked to be kept from others' eyes is
/// not sent in the clear.
class ClsGetMail {
  public:
    explicit ClsGetMail(GetMailPorts ports) : ports_(std::move(ports)) {}

    /// Brings the mailbox's messages, one connection after the other, until it is empty, and saves
    /// their attachments into the folder `Katalog`, which is made when it is missing. True when the
    /// mailbox is empty in the end; False as soon as a connection fails or the user cancels.
    /// Without `Delete` the first message comes again and again until the user cancels. SSL is used
    /// when the last cmdGetMailM used it. `opis` and `temat` mean nothing.
    bool cmdGetMail(const base::Text& host, std::int32_t port, const base::Text& user,
                    const base::SecretText& Pass, bool Delete, const base::Text& opis,
                    const base::Text& temat, const base::Text& Katalog) noexcept;

    /// Brings the mailbox's first message; null when there is none or the connection failed. An
    /// empty `Katalog` saves nothing, and a message that has files then stays on the server.
    std::shared_ptr<CMessage> cmdGetMailM(const base::Text& host, std::int32_t port,
                                          const base::Text& user, const base::SecretText& Pass,
                                          bool Delete, const base::Text& Katalog,
                                          bool czyssl) noexcept;

  private:
    struct Outcome {
        std::int32_t run_result = run_result::not_run;
        std::shared_ptr<CMessage> message;
    };
    void note_settings(const base::Text& host, std::int32_t port, const base::Text& user,
                       bool delete_stored, const base::Text& folder);
    Outcome show_form();
    std::unique_ptr<Retrieval> make_retrieval();

    GetMailPorts ports_;
};

}  // namespace tavrix::mail
