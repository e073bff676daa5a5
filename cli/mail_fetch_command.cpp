#include <cstdlib>
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
        const bool from_input = options.password_file == "-";
        const std::string path = from_input ? "/dev/stdin" : options.password_file;
        return base::from_secret_utf8(read_secret_line(path).view());
    }
    if (const char* variable = std::getenv("TAVRIX_MAIL_PASSWORD")) {
        return base::from_secret_utf8(variable);
    }
    throw CLI::RequiredError("--password-file albo zmienna TAVRIX_MAIL_PASSWORD");
}

std::optional<ports::Security> security_named(const std::string& name) {
    if (name == "none") return ports::Security::none;
    if (name == "tls") return ports::Security::tls;
    if (name == "starttls") return ports::Security::tls_after_stls;
    return std::nullopt;
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
    settings.security = security_named(options.security);
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
    row["Files"] = files_of(message);
    row["Size"] = message.Size();
    return row;
}

void print_fetched(const CMessage& message) {
    std::cout << "Od: " << line_for_people(message.text<MessageProperty::From>())
              << "\nTemat: " << line_for_people(message.text<MessageProperty::Subject>()) << '\n';
    for (const std::string& file : files_of(message)) std::cout << "Załącznik: " << file << '\n';
    std::cout << std::endl;
}

ExitCode fetch(const FetchOptions& options) {
    PortsBundle bundle;
    mail::RetrievalSettings settings = settings_of(options);
    Json rows = Json::array();
    std::string failure;
    for (std::int32_t fetched = 0; fetched < options.count; ++fetched) {
        Retrieval retrieval(mail::RetrievalForm::manager, settings, bundle.for_retrieval());
        run(retrieval, !options.json);
        if (retrieval.message() && options.json) rows.push_back(row_of(*retrieval.message()));
        if (retrieval.message() && !options.json) print_fetched(*retrieval.message());
        failure = base::to_utf8(retrieval.failure());
        if (retrieval.run_result() <= 0) break;
        if (!options.delete_stored) ++settings.message_number;
    }
    if (options.json) {
        std::cout << Json{{"messages", rows}, {"failure", failure}}.dump(2) << '\n';
    }
    if (failure.empty()) return exit_done;
    std::cerr << "Niepowodzenie: " << failure << '\n';
    return exit_failed;
}

}  // namespace

void add_mail_fetch_command(CLI::App& mail, int& exit_code) {
    auto options = std::make_shared<FetchOptions>();
    CLI::App* command = mail.add_subcommand(
        "fetch", "Pobiera wiadomości ze skrzynki POP3 i zapisuje ich załączniki");
    command->add_option("--host", options->host, "Serwer POP3")->required();
    command->add_option("--port", options->port, "Port serwera")->capture_default_str();
    command->add_option("--user", options->user, "Nazwa użytkownika")->required();
    command->add_option("--password-file", options->password_file,
                        "Plik, w którym jest tylko hasło; - czyta je z wejścia. Bez tej opcji "
                        "hasło jest w zmiennej TAVRIX_MAIL_PASSWORD");
    command->add_option("--folder", options->folder, "Katalog na załączniki")->required();
    command->add_option("--count", options->count, "Najwyżej tyle wiadomości")
        ->check(CLI::PositiveNumber);
    command
        ->add_option("--security", options->security,
                     "Szyfrowanie: none, tls od początku, starttls; auto to tls na porcie 995 i "
                     "none na innych")
        ->check(CLI::IsMember({"auto", "none", "tls", "starttls"}))
        ->capture_default_str();
    command->add_flag("--delete", options->delete_stored,
                      "Usuwa z serwera każdą wiadomość, gdy jej załączniki są zapisane");
    command->add_flag("--json", options->json, "Wynik jako JSON (dla programów)");
    command->callback([options, &exit_code] { exit_code = fetch(*options); });
}

}  // namespace tavrix::cli
