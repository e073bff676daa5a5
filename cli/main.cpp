#include <algorithm>
#include <iostream>
#include <string_view>

#include "base/error.h"
#include "base/version.h"
#include "cli/answer.h"
#include "cli/command.h"
#include "cli/usage_fault.h"
#include "console/console.h"

namespace {

constexpr const char* footer = R"(
Kody zakończenia: 0 wykonane; 1 odmowa KSeF, sieci albo bazy; 2 błąd wywołania;
3 faktura przyjęta, ale bez UPO; 4 błąd w pliku ustawień.

Zmienne: TAVRIX_SETTINGS - plik ustawień (adresy, własny urząd certyfikacji, proxy);
TAVRIX_TOKEN - token KSeF; TAVRIX_KEY_PASS - hasło klucza prywatnego.

Przykład:
  tavrix send --nip 5265877635 --token-file token.txt --env test \
      --xml faktura.xml --db firma.db --table dok_fak --id 1001)";

std::string version() {
    using namespace tavrix::base;
    return "tavrix " + std::to_string(version_major) + "." + std::to_string(version_minor) + "." +
           std::to_string(version_revision);
}

// People read it on stderr, programs where they look for the answer.
int tell(const char* text, int code, bool as_json) {
    std::cerr << "Niepowodzenie: " << text << '\n';
    if (as_json) tavrix::cli::print({{"result", text}});
    return code;
}

}  // namespace

int main(int given_count, char** given) {
    using namespace tavrix;
    const console::Console console(given_count, given);
    const int argc = console.count();
    char** const argv = console.arguments();
    int exit_code = cli::exit_usage;
    CLI::App app("Tavrix - faktury KSeF i kody kreskowe z wiersza poleceń");
    app.set_help_flag("-h,--help", "Pokazuje tę pomoc");
    app.set_version_flag("--version", version(), "Pokazuje wersję");
    app.footer(footer);
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        const auto* fault = dynamic_cast<const CLI::ParseError*>(&error);
        return "Niepowodzenie: " + (fault ? cli::usage_fault(*fault) : error.what()) +
               "\nOpis: tavrix --help, tavrix POLECENIE --help\n";
    });
    app.require_subcommand(1);
    cli::add_send_command(app, exit_code);
    cli::add_batch_command(app, exit_code);
    cli::add_split_command(app, exit_code);
    cli::add_pack_command(app, exit_code);
    cli::add_reconcile_command(app, exit_code);
    cli::add_pull_command(app, exit_code);
    cli::add_hash_command(app, exit_code);
    cli::add_token_command(app, exit_code);
    cli::add_link_commands(app, exit_code);
    cli::add_qr_command(app, exit_code);
    cli::add_barcode_command(app, exit_code);
    cli::add_validate_command(app, exit_code);
    cli::add_render_command(app, exit_code);
    cli::add_mail_command(app, exit_code);
    cli::add_pdf_commands(app, exit_code);
    // What cannot be parsed does not say it either.
    const bool as_json = std::find(argv, argv + argc, std::string_view("--json")) != argv + argc;
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (app.exit(error) == 0) return cli::exit_done;
        if (as_json) cli::print({{"result", cli::usage_fault(error)}});
        return cli::exit_usage;
    } catch (const cli::Failure& failure) {
        return tell(failure.what(), failure.code, as_json);
    } catch (const base::AutomationError& error) {
        // A size that no picture has.
        if (error.number() == base::ErrorNumber::overflow)
            return tell(error.what(), cli::exit_usage, as_json);
        const bool is_setting = error.source() == u"Tavrix.json";
        return tell(error.what(), is_setting ? cli::exit_settings : cli::exit_failed, as_json);
    } catch (const std::exception& error) {
        return tell(error.what(), cli::exit_failed, as_json);
    }
    return exit_code;
}
