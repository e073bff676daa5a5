#include <iostream>
#include <memory>

#include "base/error.h"
#include "cli/answer.h"
#include "cli/command.h"
#include "cli/ksef_options.h"
#include "cli/open_database.h"
#include "cli/ports_bundle.h"
#include "ksef/authentication.h"
#include "ksef/reconciliation.h"
#include "ksef/reconciliation_by_name.h"
#include "ksef/token.h"

namespace tavrix::cli {
namespace {

using base::Text;

struct ReconcileOptions {
    TokenSource token;
    std::string environment = "test";
    std::string database_file;
    std::string by;
    bool json = false;
};

Text reconcile(ksef::KsefPorts& ports, ports::Database& database, const ReconcileOptions& options) {
    const base::SecretText token = token_from(options.token);
    const ksef::TokenCheck check = ksef::read_token(token);
    if (!check.failure.empty()) return u"Błędny token";
    ksef::Client client(ports);
    const auto log_in = [&] {
        client.begin_call(environment_number(options.environment));
        return ksef::authenticate(ports, client, check.tax_number, token);
    };
    if (Text failure = log_in(); !failure.empty()) return failure;
    const bool by_name = options.by.empty() ? ports.settings.reconcile_by == ksef::ReconcileBy::name
                                            : options.by == "name";
    if (by_name) return ksef::reconcile_by_name(ports, client, database, check, log_in);
    ksef::reconcile_by_position(ports, client, database);
    return {};
}

// How many sales invoices have each outcome of a package.
Json outcomes(ports::Database& database) {
    constexpr std::pair<const char*, const char16_t*> conditions[] = {
        {"accepted", u"status_ksef='201'"},
        {"failed", u"Export_Opis_bledu_ksef='Failed'"},
        {"cancelled", u"Export_Opis_bledu_ksef='Canseled'"},
    };
    Json counts;
    for (const auto& [name, condition] : conditions) {
        const auto rows =
            database.open(u"select count(*) as n from dok_fak where " + Text(condition));
        counts[name] = std::stoll(base::to_utf8(ports::text_of(rows->field(u"n"))));
    }
    return counts;
}

ExitCode run(const ReconcileOptions& options) {
    PortsBundle bundle;
    ksef::KsefPorts ports = bundle.for_ksef();
    const auto opened = open_database(options.database_file);
    ports::Database& database = *opened;
    Text failure;
    try {
        failure = reconcile(ports, database, options);
    } catch (const base::AutomationError& error) {
        // What was written before stands, and is counted.
        failure = error.description();
    }
    const Json counts = outcomes(database);
    if (options.json) {
        print({{"result", base::to_utf8(failure)},
               {"complete", failure.empty()},
               {"documents", counts}});
    } else {
        std::cout << (failure.empty() ? "Wyniki sesji wsadowych zapisane.\n"
                                      : "Niepowodzenie: " + base::to_utf8(failure) + '\n')
                  << "  przyjęte " << counts["accepted"] << ", odrzucone " << counts["failed"]
                  << ", anulowane " << counts["cancelled"] << '\n';
    }
    return failure.empty() ? exit_done : exit_failed;
}

}  // namespace

void add_reconcile_command(CLI::App& app, int& exit_code) {
    auto options = std::make_shared<ReconcileOptions>();
    CLI::App* command = app.add_subcommand(
        "reconcile", "Zapisuje w dokumentach (dok_fak) wyniki zakończonych sesji wsadowych");
    add_token_options(*command, options->token);
    add_environment_option(*command, options->environment);
    add_database_option(*command, options->database_file);
    command
        ->add_option(
            "--by", options->by,
            "Jak czytać odpowiedzi KSeF: position (pyta o listę sesji bez końca, dopóki KSeF nie "
            "odpowie 200) albo name; bez tej opcji według ustawień")
        ->check(CLI::IsMember({"position", "name"}));
    add_json_option(*command, options->json);
    command->callback([options, &exit_code] { exit_code = run(*options); });
}

}  // namespace tavrix::cli
