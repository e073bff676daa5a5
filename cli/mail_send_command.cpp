#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "base/error.h"
#include "cli/command.h"
#include "cli/for_people.h"
#include "cli/ksef_options.h"
#include "cli/mail_output.h"
#include "cli/ports_bundle.h"
#include "cli/progress_bar.h"
#include "console/console.h"
#include "mail/delivery.h"
#include "mail/outgoing/notification.h"

namespace tavrix::cli {
namespace {

using Json = nlohmann::ordered_json;
using mail::outgoing::Draft;
using mail::outgoing::Mailbox;

struct MailSendOptions {
    std::string server;
    std::int32_t port = 587;
    std::string security;
    std::string user;
    std::string password_file;
    std::string from;
    std::vector<std::string> to;
    std::vector<std::string> cc;
    std::vector<std::string> bcc;
    std::string subject;
    std::string text;
    std::string text_file;
    std::string html_file;
    std::vector<std::string> files;
    std::string reply_to;
    std::string sender;
    std::string priority;
    std::string notify;
    bool json = false;
};

class ShownProgress final : public mail::smtp::SendingListener {
  public:
    explicit ShownProgress(bool wanted) : wanted_(wanted) {}
    void on_stage(mail::smtp::Stage stage) override {
        if (stage == mail::smtp::Stage::leaving) bar_.reset();
    }
    bool goes_on(std::uint64_t sent_bytes, std::uint64_t all_bytes) override {
        if (sent_bytes == 0) return true;
        if (!bar_) bar_.emplace(all_bytes, wanted_);
        bar_->add(static_cast<std::int64_t>(sent_bytes - shown_));
        shown_ = sent_bytes;
        return true;
    }

  private:
    bool wanted_;
    std::optional<ProgressBar> bar_;
    std::uint64_t shown_ = 0;
};

base::SecretText password_of(const MailSendOptions& options) {
    if (!options.password_file.empty()) {
        return base::from_secret_utf8(read_secret_line(options.password_file).view());
    }
    if (const char* variable = console::variable("TAVRIX_SMTP_PASS")) {
        return base::from_secret_utf8(variable);
    }
    if (options.user.empty()) return {};
    throw CLI::RequiredError("--password-file albo zmienna TAVRIX_SMTP_PASS");
}

std::vector<Mailbox> mailboxes_of(const std::vector<std::string>& options) {
    std::vector<Mailbox> all;
    for (const std::string& option : options) {
        const auto some = mail::outgoing::parse_mailboxes(base::from_utf8(option), u";");
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

base::Text text_in(const std::string& file) {
    if (file.empty()) return {};
    return base::from_utf8(base::chars_of(read_file(file == "-" ? "/dev/stdin" : file)));
}

Draft draft_of(const MailSendOptions& options) {
    Draft draft;
    draft.from = mail::outgoing::parse_mailbox(base::from_utf8(options.from));
    draft.to = mailboxes_of(options.to);
    draft.cc = mailboxes_of(options.cc);
    draft.bcc = mailboxes_of(options.bcc);
    draft.subject = base::from_utf8(options.subject);
    draft.body =
        options.text_file.empty() ? base::from_utf8(options.text) : text_in(options.text_file);
    draft.html = text_in(options.html_file);
    for (const std::string& file : options.files) draft.files.push_back(base::from_utf8(file));
    draft.reply_to = base::from_utf8(options.reply_to);
    draft.sender = base::from_utf8(options.sender);
    draft.priority = base::from_utf8(options.priority);
    return draft;
}

ports::Security security_in(const MailSendOptions& options) {
    if (options.security == "none") return ports::Security::none;
    if (options.security == "tls") return ports::Security::tls;
    if (options.security == "starttls") return ports::Security::tls_after_starttls;
    return mail::security_of(options.port, true);
}

// The empty text when the message went.
base::Text outcome_of(const MailSendOptions& options) {
    PortsBundle bundle;
    const mail::Account account{base::from_utf8(options.server), options.port, security_in(options),
                                base::from_utf8(options.user), password_of(options)};
    ShownProgress progress(!options.json);
    try {
        Draft draft = draft_of(options);
        auto wanted = mail::outgoing::read_notification(base::from_utf8(options.notify));
        draft.receipt_to = std::move(wanted.receipt_to);
        return mail::deliver(bundle.for_delivery(), account, draft, wanted.notify, progress);
    } catch (const base::AutomationError& error) {
        return error.description();
    }
}

ExitCode send_mail(const MailSendOptions& options) {
    const base::Text failure = outcome_of(options);
    if (options.json) {
        Json answer;
        answer["sent"] = failure.empty();
        if (!failure.empty()) answer["error"] = base::to_utf8(failure);
        std::cout << answer.dump(2) << '\n';
    } else if (failure.empty()) {
        std::cout << "Wysłano\n";
    } else {
        std::cerr << "Niepowodzenie: " << for_people(failure) << '\n';
    }
    return failure.empty() ? exit_done : exit_failed;
}

void add_server_options(CLI::App& command, MailSendOptions& options) {
    command.add_option("--server", options.server, "Serwer SMTP")->required();
    command.add_option("--port", options.port, "Port serwera")
        ->check(CLI::Range(1, 65'535))
        ->capture_default_str();
    command
        .add_option("--security", options.security,
                    "tls od pierwszego bajtu, starttls albo none; bez tego tls na porcie 465, "
                    "starttls na innym")
        ->check(CLI::IsMember({"tls", "starttls", "none"}));
    command.add_option("--user", options.user, "Użytkownik; bez niego nie loguje się");
    command.add_option("--password-file", options.password_file,
                       "Plik, w którym jest tylko hasło; - to standardowe wejście. Bez niego "
                       "zmienna TAVRIX_SMTP_PASS");
}

void add_message_options(CLI::App& command, MailSendOptions& options) {
    command.add_option("--from", options.from, "Nadawca, np. \"Jan <jan@firma.pl>\"")->required();
    command.add_option("--to", options.to, "Adresat; można powtórzyć");
    command.add_option("--cc", options.cc, "Adresat kopii; można powtórzyć");
    command.add_option("--bcc", options.bcc, "Adresat kopii ukrytej; można powtórzyć");
    command.add_option("--subject", options.subject, "Temat");
    auto* const text = command.add_option("--text", options.text, "Treść");
    command.add_option("--text-file", options.text_file, "Plik z treścią (UTF-8); - to wejście")
        ->excludes(text);
    command.add_option("--html-file", options.html_file, "Plik z treścią w HTML (UTF-8)");
    command.add_option("--attach", options.files, "Załącznik; można powtórzyć");
    command.add_option("--reply-to", options.reply_to, "Adres do odpowiedzi");
    command.add_option("--sender", options.sender, "Kto wysyła w imieniu nadawcy");
    command.add_option("--priority", options.priority, "Wartość nagłówka X-Priority");
    command.add_option("--notify", options.notify,
                       "NEVER albo SUCCESS, FAILURE, DELAY: o czym zawiadomić; adres: kto ma "
                       "dostać potwierdzenie odczytu");
}

}  // namespace

void add_mail_send_command(CLI::App& mail, int& exit_code) {
    auto options = std::make_shared<MailSendOptions>();
    CLI::App* command = mail.add_subcommand("send", "Wysyła wiadomość przez SMTP");
    add_server_options(*command, *options);
    add_message_options(*command, *options);
    command->add_flag("--json", options->json, "Wynik jako JSON (dla programów)");
    command->callback([options, &exit_code] { exit_code = send_mail(*options); });
}

}  // namespace tavrix::cli
