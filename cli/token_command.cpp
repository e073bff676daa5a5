#include <iostream>
#include <memory>

#include "base/error.h"
#include "cli/answer.h"
#include "cli/command.h"
#include "cli/ksef_options.h"
#include "cli/ports_bundle.h"
#include "ksef/authentication.h"
#include "ksef/token.h"
#include "ksef/token_request.h"

namespace tavrix::cli {
namespace {

struct TokenOptions {
    std::string nip;
    TokenSource token;
};

struct NewTokenOptions : TokenOptions {
    std::string environment = "test";
    std::vector<std::string> permissions{"InvoiceRead", "InvoiceWrite"};
    std::string description = "tavrix";
    bool json = false;
};

// Its tax number.
base::Text tax_number_in(const base::SecretText& token, const std::string& nip) {
    try {
        const ksef::TokenCheck check =
            nip.empty() ? ksef::read_token(token) : ksef::check_token(token, base::from_utf8(nip));
        if (check.failure.empty()) return check.tax_number;
        // The failure's own text repeats the token, which has no place on a screen.
        throw Failure(exit_failed, check.tax_number.empty()
                                       ? "Błędny token: brak części rozdzielonych znakiem |"
                                       : base::to_utf8(check.failure));
    } catch (const base::AutomationError& error) {
        throw Failure(exit_failed, "Błędny token: " + base::to_utf8(error.description()));
    }
}

ExitCode check(const TokenOptions& options) {
    const base::Text tax_number = tax_number_in(token_from(options.token), options.nip);
    std::cout << "Token ma poprawną budowę, NIP " << base::to_utf8(tax_number) << '\n';
    return exit_done;
}

void print_token(const ksef::IssuedToken& issued, const std::string& status, bool json) {
    const base::SecretUtf8 token = base::to_secret_utf8(issued.token_or_failure.view());
    if (!json) {
        std::cout << token.view() << '\n';
        return;
    }
    Json answer;
    answer["token"] = token.view();
    answer["referenceNumber"] = issued.reference;
    answer["status"] = status;
    print(answer);
}

ExitCode issue(const NewTokenOptions& options) {
    PortsBundle bundle;
    const base::SecretText token = token_from(options.token);
    const base::Text tax_number = tax_number_in(token, options.nip);
    ksef::KsefPorts ports = bundle.for_ksef();
    ksef::Client client(ports);
    client.begin_call(environment_number(options.environment));
    if (const base::Text failure = ksef::authenticate(ports, client, tax_number, token);
        !failure.empty()) {
        throw Failure(exit_failed, base::to_utf8(failure));
    }
    const ksef::IssuedToken issued =
        ksef::request_token(client, {options.permissions, base::from_utf8(options.description)});
    if (!issued.issued) throw Failure(exit_failed, base::to_utf8(issued.token_or_failure.view()));
    // The service tells the token this once: it is shown whatever becomes of it.
    const std::string status = ksef::wait_until_active(client, ports.clock, issued.reference);
    print_token(issued, status, options.json);
    if (status == "Active") return exit_done;
    std::cerr << "Token wydany, ale jeszcze nieaktywny, stan: " << status << '\n';
    return exit_failed;
}

void add_check(CLI::App& group, int& exit_code) {
    auto options = std::make_shared<TokenOptions>();
    CLI::App* command =
        group.add_subcommand("check", "Sprawdza budowę tokena i jego NIP, bez łączenia się z KSeF");
    command->add_option("--nip", options->nip, "NIP, który ma być w tokenie");
    add_token_options(*command, options->token);
    command->callback([options, &exit_code] { exit_code = check(*options); });
}

void add_new(CLI::App& group, int& exit_code) {
    auto options = std::make_shared<NewTokenOptions>();
    CLI::App* command =
        group.add_subcommand("new", "Wydaje nowy token, czeka, aż będzie aktywny, i wypisuje go");
    command->add_option("--nip", options->nip, "NIP, który ma być w tokenie do zalogowania");
    add_token_options(*command, options->token);
    add_environment_option(*command, options->environment);
    command
        ->add_option("--permission", options->permissions,
                     "Uprawnienie, np. InvoiceRead; można powtórzyć")
        ->capture_default_str();
    command->add_option("--description", options->description, "Opis, 5 do 256 znaków")
        ->capture_default_str();
    add_json_option(*command, options->json);
    command->callback([options, &exit_code] { exit_code = issue(*options); });
}

}  // namespace

void add_token_command(CLI::App& app, int& exit_code) {
    CLI::App* group = app.add_subcommand("token", "Tokeny KSeF");
    group->require_subcommand(1);
    add_check(*group, exit_code);
    add_new(*group, exit_code);
}

}  // namespace tavrix::cli
