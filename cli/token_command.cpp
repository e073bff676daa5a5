#include <iostream>
#include <memory>

#include "base/error.h"
#include "cli/command.h"
#include "cli/ports_bundle.h"
#include "ksef/token.h"

namespace tavrix::cli {
namespace {

struct TokenOptions {
    std::string nip;
    std::string token;
    std::string token_file;
};

ExitCode check(const TokenOptions& options) {
    const base::SecretText token = token_from(options.token, options.token_file);
    try {
        const ksef::TokenCheck check = options.nip.empty()
                                           ? ksef::read_token(token)
                                           : ksef::check_token(token, base::from_utf8(options.nip));
        if (check.failure.empty()) {
            std::cout << "Token ma poprawną budowę, NIP " << base::to_utf8(check.tax_number)
                      << '\n';
            return exit_done;
        }
        // The failure's own text repeats the token, which has no place on a screen.
        std::cout << (check.tax_number.empty()
                          ? "Błędny token: brak części rozdzielonych znakiem |\n"
                          : base::to_utf8(check.failure) + "\n");
    } catch (const base::AutomationError& error) {
        std::cout << "Błędny token: " << base::to_utf8(error.description()) << '\n';
    }
    return exit_failed;
}

}  // namespace

void add_token_command(CLI::App& app, int& exit_code) {
    auto options = std::make_shared<TokenOptions>();
    CLI::App* group = app.add_subcommand("token", "Tokeny KSeF");
    group->require_subcommand(1);
    CLI::App* command = group->add_subcommand(
        "check", "Sprawdza budowę tokena i jego NIP, bez łączenia się z KSeF");
    command->add_option("--nip", options->nip, "NIP, który ma być w tokenie");
    command->add_option("--token", options->token,
                        "Token KSeF; bezpieczniej --token-file albo TAVRIX_TOKEN");
    command->add_option("--token-file", options->token_file, "Plik, w którym jest tylko token");
    command->callback([options, &exit_code] { exit_code = check(*options); });
}

}  // namespace tavrix::cli
