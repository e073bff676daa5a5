#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "cli/command.h"
#include "cli/ksef_options.h"
#include "cli/ports_bundle.h"
#include "cli/progress_bar.h"
#include "ksef/authentication.h"
#include "ksef/batch_parts.h"
#include "ksef/batch_session.h"
#include "ksef/token.h"

namespace tavrix::cli {
namespace {

using base::Text;

struct BatchCommandOptions {
    std::string package;
    TokenSource token;
    std::string environment = "test";
    std::string system_code = "FA (3)";
    std::string schema_version = "1-0E";
    std::string form_code = "FA";
    std::string state_file;
    std::uint64_t part_bytes = ksef::largest_part_bytes;
    int uploads_at_once = 4;
    bool json = false;
};

Text send_package(ksef::KsefPorts& ports, const BatchCommandOptions& options,
                  std::string& reference) {
    const base::SecretText token = token_from(options.token);
    const Text package = base::from_utf8(options.package);
    const Text system_code = base::from_utf8(options.system_code);
    const Text schema_version = base::from_utf8(options.schema_version);
    const Text form_code = base::from_utf8(options.form_code);
    const std::uint64_t bytes = ports.files.open(package)->size();

    ksef::Client client(ports);
    client.begin_call(environment_number(options.environment));
    const ksef::TokenCheck check = ksef::read_token(token);
    if (!check.failure.empty()) return check.failure;
    if (Text failure = ksef::authenticate(ports, client, check.tax_number, token); !failure.empty())
        return failure;

    ProgressBar progress(bytes, !options.json);
    ksef::PartsOptions parts;
    parts.part_bytes = options.part_bytes;
    parts.uploads_at_once = options.uploads_at_once;
    parts.state_file = base::from_utf8(
        options.state_file.empty() ? options.package + ".upload-state" : options.state_file);
    parts.on_sent = [&](std::int64_t sent) { progress.add(sent); };
    parts.on_uploaded = [&](const std::string& session) {
        reference = session;
        ksef::note_sent_package(ports, package, session);
    };
    const Text failure =
        ksef::send_in_parts(ports, client, package, {system_code, schema_version, form_code},
                            {token, check.tax_number}, parts);
    if (failure.empty() && ports.files.is_file(parts.state_file)) {
        std::cerr << "Nie udało się usunąć pliku stanu, w którym jest klucz sesji: "
                  << base::to_utf8(parts.state_file) << '\n';
    }
    return failure;
}

ExitCode send(const BatchCommandOptions& options) {
    PortsBundle bundle;
    ksef::KsefPorts ports = bundle.for_ksef();
    std::string reference;
    const Text failure = send_package(ports, options, reference);
    if (options.json) {
        nlohmann::ordered_json answer;
        answer["result"] = base::to_utf8(failure);
        answer["closed"] = failure.empty();
        answer["session"] = reference;
        std::cout << answer.dump(2) << '\n';
    } else if (failure.empty()) {
        std::cout << "Paczka wysłana, sesja zamknięta: " << reference
                  << "\nO losie faktur mówi `tavrix reconcile`.\n";
    } else {
        std::cout << "Niepowodzenie: " << base::to_utf8(failure) << '\n';
    }
    return failure.empty() ? exit_done : exit_failed;
}

}  // namespace

void add_batch_command(CLI::App& app, int& exit_code) {
    auto options = std::make_shared<BatchCommandOptions>();
    CLI::App* command = app.add_subcommand(
        "batch",
        "Wysyła paczkę faktur (ZIP, do 5 GB) w sesji wsadowej; przerwana wysyłka zaczyna "
        "się od tego, czego jeszcze nie wysłano");
    command->add_option("package", options->package, "Plik paczki, np. z `tavrix pack`")
        ->required()
        ->check(CLI::ExistingFile);
    add_token_options(*command, options->token);
    add_environment_option(*command, options->environment);
    command->add_option("--system-code", options->system_code, "Kod systemowy formularza")
        ->capture_default_str();
    command->add_option("--schema-version", options->schema_version, "Wersja schematu")
        ->capture_default_str();
    command->add_option("--form-code", options->form_code, "Wartość kodu formularza")
        ->capture_default_str();
    command->add_option("--state", options->state_file,
                        "Plik stanu z kluczem sesji, tylko dla właściciela, usuwany na końcu; bez "
                        "tej opcji stoi obok paczki");
    command->add_option("--part-bytes", options->part_bytes, "Wielkość części przed szyfrowaniem")
        ->check(CLI::Range(std::uint64_t{1}, ksef::largest_part_bytes))
        ->capture_default_str();
    command->add_option("--parallel", options->uploads_at_once, "Ile części wysyłać naraz")
        ->check(CLI::Range(1, 16))
        ->capture_default_str();
    command->add_flag("--json", options->json, "Wynik jako JSON (dla programów)");
    command->callback([options, &exit_code] { exit_code = send(*options); });
}

}  // namespace tavrix::cli
