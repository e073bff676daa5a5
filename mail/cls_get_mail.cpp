#include "mail/cls_get_mail.h"

#include "base/error.h"
#include "mail/trace_marks.h"

namespace tavrix::mail {
namespace {

/// The settings keep the password for as long as this lives.
class PasswordInUse {
  public:
    PasswordInUse(RetrievalSettings& settings, const base::SecretText& password)
        : settings_(settings) {
        settings_.password = password.copy();
    }
    ~PasswordInUse() { settings_.password.clear(); }
    PasswordInUse(const PasswordInUse&) = delete;
    PasswordInUse& operator=(const PasswordInUse&) = delete;

  private:
    RetrievalSettings& settings_;
};

void make_folder_in(ports::FileStore& files, base::TextView folder) {
    while (folder.ends_with(u'\\')) folder.remove_suffix(1);
    try {
        files.make_folder(folder);
    } catch (const base::AutomationError&) {
        // What cannot be made may be there; where it is not, the first file says so.
    }
}

}  // namespace

bool ClsGetMail::cmdGetMail(const base::Text& host, std::int32_t port, const base::Text& user,
                            const base::SecretText& Pass, bool Delete, const base::Text& /*opis*/,
                            const base::Text& /*temat*/, const base::Text& Katalog) noexcept {
    try {
        // The messages themselves are out of the host's reach: without files nothing would be left.
        if (Katalog.empty()) return false;
        make_folder_in(ports_.files, Katalog);
        std::int32_t result = run_result::empty;
        do {
            note_settings(host, port, user, Delete, Katalog);
            const PasswordInUse password(ports_.settings, Pass);
            result = show_form().run_result;
        } while (result > 0);
        return result == run_result::empty;
    } catch (...) {
        return false;
    }
}

std::shared_ptr<CMessage> ClsGetMail::cmdGetMailM(const base::Text& host, std::int32_t port,
                                                  const base::Text& user,
                                                  const base::SecretText& Pass, bool Delete,
                                                  const base::Text& Katalog, bool czyssl) noexcept {
    try {
        note_settings(host, port, user, Delete, Katalog);
        ports_.settings.ssl = czyssl;
        const PasswordInUse password(ports_.settings, Pass);
        return show_form().message;
    } catch (...) {
        return nullptr;
    }
}

void ClsGetMail::note_settings(const base::Text& host, std::int32_t port, const base::Text& user,
                               bool delete_stored, const base::Text& folder) {
    RetrievalSettings& settings = ports_.settings;
    settings.folder = folder;
    settings.host = host;
    settings.port = port;
    settings.user = user;
    settings.delete_stored = delete_stored;
}

// Nothing of a message stays in the library: what the host cannot reach any more is given back.
ClsGetMail::Outcome ClsGetMail::show_form() {
    const std::unique_ptr<Retrieval> retrieval = make_retrieval();
    ports_.window.show(*retrieval);
    return {retrieval->run_result(), retrieval->message()};
}

std::unique_ptr<Retrieval> ClsGetMail::make_retrieval() {
    const RetrievalSettings& settings = ports_.settings;
    try {
        return std::make_unique<Retrieval>(RetrievalForm::manager, settings,
                                           ports_.for_retrieval(RetrievalForm::manager));
    } catch (const base::AutomationError& error) {
        ports_.trace.look_for_switch();
        ports_.trace.mark(fetch_marks[u"1a-problem"], error.description());
        if (security_of(settings) != ports::Security::none) throw;
        return std::make_unique<Retrieval>(RetrievalForm::socket, settings,
                                           ports_.for_retrieval(RetrievalForm::socket));
    }
}

}  // namespace tavrix::mail
