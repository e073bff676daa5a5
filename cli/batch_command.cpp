#include <iostream>
#include <memory>

#include "cli/answer.h"
#include "cli/command.h"
#include "cli/ksef_options.h"
#include "cli/path_checks.h"
#include "cli/ports_bundle.h"
#include "cli/progress_bar.h"
#include "ksef/authentication.h"
#include "ksef/batch_outcome.h"
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
    FormOptions form;
    std::string state_file;
    std::uint64_t part_bytes = ksef::largest_part_bytes;
    int uploads_at_once = 4;
    int wait_s = 0;
    bool json = false;
};

struct Sent {
    std::string session;
    ksef::BatchOutcome outcome;
};

Text send_package(ksef::KsefPorts& ports, const BatchCommandOptions& options, Sent& sent) {
    const base::SecretText token = token_from(options.token);
    const Text package = base::from_utf8(options.package);
    const Text system_code = base::from_utf8(options.form.system_code);
    const Text schema_version = base::from_utf8(options.form.schema_version);
    const Text form_code = base::from_utf8(options.form.form_code);
    const std::uint64_t bytes = ports.files.open(package)->size();

    ksef::Client client(ports);
    const ksef::TokenCheck check = ksef::read_token(token);
    if (!check.failure.empty()) return check.failure;
    const auto log_in = [&] {
        client.begin_call(environment_number(options.environment));
        return ksef::authenticate(ports, client, check.tax_number, token);
    };
    if (Text failure = log_in(); !failure.empty()) return failure;

    ProgressBar progress(bytes, !options.json);
    ksef::PartsOptions parts;
    parts.part_bytes = options.part_bytes;
    parts.uploads_at_once = options.uploads_at_once;
    parts.state_file = base::from_utf8(
        options.state_file.empty() ? options.package + ".upload-state" : options.state_file);
    parts.on_sent = [&](std::int64_t bytes_sent) { progress.add(bytes_sent); };
    parts.on_uploaded = [&](const std::string& session) {
        sent.session = session;
        ksef::note_sent_package(ports, package, session);
    };
    const Text failure =
        ksef::send_in_parts(ports, client, package, {system_code, schema_version, form_code},
                            {token, check.tax_number}, parts);
    if (failure.empty() && ports.files.is_file(parts.state_file)) {
        std::cerr << "Nie udało się usunąć pliku stanu, w którym jest klucz sesji: "
                  << base::to_utf8(parts.state_file) << '\n';
    }
    if (failure.empty() && options.wait_s > 0) {
        sent.outcome = ksef::wait_for_batch(client, ports.clock, sent.session,
                                            std::chrono::seconds(options.wait_s), log_in);
    }
    return failure;
}

void report(const Sent& sent, const Text& failure, const BatchCommandOptions& options) {
    const ksef::BatchOutcome& outcome = sent.outcome;
    if (options.json) {
        Json answer{{"result", base::to_utf8(failure)},
                    {"closed", failure.empty()},
                    {"session", sent.session}};
        if (failure.empty() && options.wait_s > 0) {
            answer["outcome"] = {{"code", outcome.code},
                                 {"description", outcome.description},
                                 {"invoices", outcome.invoices},
                                 {"accepted", outcome.accepted},
                                 {"rejected", outcome.rejected}};
        }
        return print(answer);
    }
    if (!failure.empty()) {
        std::cout << "Niepowodzenie: " << base::to_utf8(failure) << '\n';
        return;
    }
    std::cout << "Paczka wysłana, sesja zamknięta: " << sent.session << '\n';
    if (outcome.is_known()) {
        std::cout << "Wynik " << outcome.code << " (" << outcome.description << "): faktury "
                  << outcome.invoices << ", przyjęte " << outcome.accepted << ", odrzucone "
                  << outcome.rejected << '\n';
    }
    std::cout << "Los każdej faktury zapisuje w bazie `tavrix reconcile`.\n";
}

ExitCode send(const BatchCommandOptions& options) {
    PortsBundle bundle;
    ksef::KsefPorts ports = bundle.for_ksef();
    Sent sent;
    const Text failure = send_package(ports, options, sent);
    report(sent, failure, options);
    const bool is_good = failure.empty() && (options.wait_s == 0 || sent.outcome.is_success());
    return is_good ? exit_done : exit_failed;
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
        ->check(existing_file());
    add_token_options(*command, options->token);
    add_environment_option(*command, options->environment);
    add_form_options(*command, options->form);
    command->add_option("--state", options->state_file,
                        "Plik stanu z kluczem sesji, tylko dla właściciela, usuwany na końcu; bez "
                        "tej opcji stoi obok paczki");
    command->add_option("--part-bytes", options->part_bytes, "Wielkość części przed szyfrowaniem")
        ->check(CLI::Range(std::uint64_t{1}, ksef::largest_part_bytes))
        ->capture_default_str();
    command->add_option("--parallel", options->uploads_at_once, "Ile części wysyłać naraz")
        ->check(CLI::Range(1, 16))
        ->capture_default_str();
    command
        ->add_option("--wait", options->wait_s,
                     "Ile sekund czekać na wynik sesji; bez tej opcji koniec po zamknięciu")
        ->check(CLI::Range(0, 86'400));
    add_json_option(*command, options->json);
    command->callback([options, &exit_code] { exit_code = send(*options); });
}

}  // namespace tavrix::cli
