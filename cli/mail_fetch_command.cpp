#include <iostream>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "cli/command.h"
#include "cli/for_people.h"
#include "cli/ksef_options.h"
#include "cli/mail_output.h"
#include "cli/ports_bundle.h"
#include "cli/progress_bar.h"
#include "console/console.h"

namespace tavrix::cli {
namespace {

using Json = nlohmann::ordered_json;
using mail::CMessage;
using mail::MessageProperty;
using mail::Retrieval;

struct FetchOptions {
    std::string host;
    std::int32_t port = mail::pop3s_port;
    std::string user;
    std::string password_file;
    std::string folder;
    std::int32_t count = std::numeric_limits<std::int32_t>::max();
    std::string security = "auto";
    bool delete_stored = false;
    bool json = false;
};

// Never an argument: other users of the machine see those.
base::SecretText password_from(const FetchOptions& options) {
    if (!options.password_file.empty()) {
        return base::from_secret_utf8(read_secret_line(options.password_file).view());
    }
    if (const char* variable = console::variable("TAVRIX_MAIL_PASSWORD")) {
        return base::from_secret_utf8(variable);
    }
    throw CLI::RequiredError("--password-file albo zmienna TAVRIX_MAIL_PASSWORD");
}

// Never in the clear unless that is said.
ports::Security security_in(const FetchOptions& options) {
    if (options.security == "none") return ports::Security::none;
    const bool is_auto = options.security == "auto";
    const bool from_first_byte = is_auto && options.port == mail::pop3s_port;
    return from_first_byte || options.security == "tls" ? ports::Security::tls
                                                        : ports::Security::tls_after_stls;
}

mail::RetrievalSettings settings_of(const FetchOptions& options) {
    mail::RetrievalSettings settings;
    settings.host = base::from_utf8(options.host);
    settings.port = options.port;
    settings.user = base::from_utf8(options.user);
    settings.password = password_from(options);
    settings.folder = base::from_utf8(options.folder);
    if (!settings.folder.ends_with(u'/')) settings.folder += u'\\';
    settings.delete_stored = options.delete_stored;
    settings.security = security_in(options);
    settings.keep_whole = true;
    return settings;
}

/// Shows how much of a message is here, as soon as its size is known.
class MessageProgress {
  public:
    explicit MessageProgress(bool wanted) : wanted_(wanted) {}

    void show(const mail::RetrievalLabels& labels) {
        if (labels.expected_bytes == 0) return;
        if (!bar_) bar_.emplace(labels.expected_bytes, wanted_);
        bar_->add(static_cast<std::int64_t>(labels.received_bytes - shown_bytes_));
        shown_bytes_ = labels.received_bytes;
    }

  private:
    bool wanted_;
    std::optional<ProgressBar> bar_;
    std::uint64_t shown_bytes_ = 0;
};

void run(Retrieval& retrieval, bool progress_wanted) {
    constexpr std::chrono::milliseconds slice{100};
    MessageProgress progress(progress_wanted);
    while (retrieval.go_on(slice)) progress.show(retrieval.labels());
    progress.show(retrieval.labels());
}

Json row_of(const CMessage& message) {
    Json row;
    row["From"] = base::to_utf8(message.text<MessageProperty::From>());
    row["MessageTo"] = base::to_utf8(message.text<MessageProperty::MessageTo>());
    row["Subject"] = base::to_utf8(message.text<MessageProperty::Subject>());
    row["SendDate"] = base::to_utf8(message.text<MessageProperty::SendDate>());
    row["MessageID"] = base::to_utf8(message.text<MessageProperty::MessageID>());
    row["MessageText"] = base::to_utf8(message.text<MessageProperty::MessageText>());
    row["Files"] = files_of(message);
    row["Size"] = message.Size();
    return row;
}

void print_fetched(const CMessage& message) {
    std::cout << "Od: " << line_for_people(message.text<MessageProperty::From>())
              << "\nTemat: " << line_for_people(message.text<MessageProperty::Subject>()) << '\n';
    for (const std::string& file : files_of(message))
        std::cout << "Plik: " << line_for_people(base::from_utf8(file)) << '\n';
    std::cout << std::endl;
}

// One line for each message as soon as it is there: whatever ends the program later, it is told.
class FetchedMessages {
  public:
    explicit FetchedMessages(bool json) : json_(json) {
        if (json_) std::cout << "{\n  \"messages\": [";
    }
    void add(const CMessage& message) {
        if (json_) {
            std::cout << (is_first_ ? "\n    " : ",\n    ") << row_of(message).dump() << std::flush;
        } else {
            print_fetched(message);
        }
        is_first_ = false;
    }
    void end(const std::string& failure) {
        if (json_) {
            std::cout << "\n  ],\n  \"failure\": " << Json(failure).dump() << "\n}" << std::endl;
        }
    }

  private:
    bool json_;
    bool is_first_ = true;
};

/// Knows a message that was to be deleted and comes again.
class Deleted {
  public:
    bool comes_again(const CMessage& message, std::int32_t mailbox_count) {
        const base::Text& headers = message.text<MessageProperty::Headers>();
        const std::size_t size = message.text<MessageProperty::MessageBody>().size();
        // Equal ones are in some mailboxes; but then there are fewer of them.
        const bool again = headers == headers_ && size == size_ && mailbox_count >= mailbox_count_;
        headers_ = headers;
        size_ = size;
        mailbox_count_ = mailbox_count;
        return again;
    }

  private:
    base::Text headers_;
    std::size_t size_ = 0;
    std::int32_t mailbox_count_ = std::numeric_limits<std::int32_t>::max();
};

ExitCode fetch(const FetchOptions& options) {
    PortsBundle bundle;
    mail::RetrievalSettings settings = settings_of(options);
    FetchedMessages messages(options.json);
    Deleted deleted;
    base::Text failure;
    for (std::int32_t fetched = 0; fetched < options.count && std::cout; ++fetched) {
        Retrieval retrieval(mail::RetrievalForm::manager, settings, bundle.for_retrieval());
        run(retrieval, !options.json);
        if (retrieval.run_result() < 0) {
            failure = retrieval.failure().empty() ? u"Nieznany błąd." : retrieval.failure();
        }
        const std::shared_ptr<CMessage>& message = retrieval.message();
        if (message && options.delete_stored &&
            deleted.comes_again(*message, retrieval.mailbox_count())) {
            failure = u"Serwer nie usuwa wiadomości.";
            break;
        }
        if (message) messages.add(*message);
        if (retrieval.run_result() <= 0) break;
        if (!options.delete_stored) ++settings.message_number;
    }
    messages.end(base::to_utf8(failure));
    if (!std::cout) failure = u"Nie można zapisać wyniku.";
    if (failure.empty()) return exit_done;
    std::cerr << "Niepowodzenie: " << for_people(failure) << '\n';
    return exit_failed;
}

}  // namespace

void add_mail_fetch_command(CLI::App& mail, int& exit_code) {
    auto options = std::make_shared<FetchOptions>();
    CLI::App* command = mail.add_subcommand(
        "fetch", "Pobiera wiadomości ze skrzynki POP3; zapisuje je w całości i ich załączniki");
    command->add_option("--host", options->host, "Serwer POP3")->required();
    command->add_option("--port", options->port, "Port serwera")->capture_default_str();
    command->add_option("--user", options->user, "Nazwa użytkownika")->required();
    command->add_option("--password-file", options->password_file,
                        "Plik, w którym jest tylko hasło; - czyta je z wejścia. Bez tej opcji "
                        "hasło jest w zmiennej TAVRIX_MAIL_PASSWORD");
    command->add_option("--folder", options->folder, "Katalog na wiadomości i załączniki")
        ->required()
        ->check(CLI::Validator(
            [](const std::string& folder) {
                return folder.empty() ? std::string("potrzebna nazwa katalogu") : std::string();
            },
            ""));
    command->add_option("--count", options->count, "Najwyżej tyle wiadomości")
        ->check(CLI::PositiveNumber);
    command
        ->add_option("--security", options->security,
                     "Szyfrowanie: none, tls od początku, starttls; auto to tls na porcie 995 i "
                     "starttls na innych")
        ->check(CLI::IsMember({"auto", "none", "tls", "starttls"}))
        ->capture_default_str();
    command->add_flag("--delete", options->delete_stored,
                      "Usuwa z serwera każdą wiadomość, gdy jest zapisana");
    command->add_flag("--json", options->json, "Wynik jako JSON (dla programów)");
    command->callback([options, &exit_code] { exit_code = fetch(*options); });
}

}  // namespace tavrix::cli
