#include "sandbox/command_line.h"

#include <CLI/CLI.hpp>
#include <stdexcept>

#include "sandbox/basics/path.h"
#include "sandbox/http/routes.h"

namespace tavrix::sandbox {
namespace {

void add_pace(CLI::App& app, const std::string& name, const std::string& what, Pace& pace) {
    app.add_option("--" + name + "-delay", pace.delay_ms, what + ": milliseconds it takes")
        ->check(CLI::NonNegativeNumber)
        ->group("Waiting");
    app.add_option("--" + name + "-polls", pace.polls,
                   what + ": how often it answers \"not yet\" first")
        ->check(CLI::NonNegativeNumber)
        ->group("Waiting");
}

// As the command line's library has them, for paths in UTF-8 on any system.
CLI::Validator existing_folder() {
    return {[](const std::string& folder) {
                std::error_code ignored;
                return std::filesystem::is_directory(path_of(folder), ignored)
                           ? std::string()
                           : "Directory does not exist: " + folder;
            },
            "DIR"};
}

CLI::Validator existing_file() {
    return {[](const std::string& file) {
                std::error_code ignored;
                return std::filesystem::is_regular_file(path_of(file), ignored)
                           ? std::string()
                           : "File does not exist: " + file;
            },
            "FILE"};
}

}  // namespace

CommandLine read_command_line(int count, char** arguments) {
    Options options;
    bool keep_zeros = false;
    std::vector<std::string> fault_texts;

    CLI::App app(
        "A KSeF (national e-invoicing system, API 2) of your own, on this computer, for testing "
        "programs that send and fetch invoices. It keeps its own keys, checks what it is sent as "
        "the real system does, and nothing it holds ever leaves this computer. Open its address "
        "in a browser to see what has arrived.",
        "tavrix-sandbox");
    app.set_version_flag("--version", std::string("tavrix-sandbox " TAVRIX_VERSION));

    app.add_option("--port", options.port, "port to listen on; 0 picks a free one")
        ->capture_default_str()
        ->check(CLI::Range(0, 65535))
        ->group("Address");
    app.add_option(
           "--bind", options.bind_address,
           "address to listen on; anything but 127.0.0.1 opens the sandbox to other computers")
        ->capture_default_str()
        ->group("Address");
    app.add_option("--port-file", options.port_file,
                   "file that receives the port number once it listens")
        ->group("Address");
    app.add_flag("--https", options.https,
                 "serve HTTPS with a certificate of the sandbox's own authority")
        ->group("Address");
    app.add_option("--ca-file-out", options.ca_file_out,
                   "file that receives the authority's certificate (PEM) for clients to trust; "
                   "with --https")
        ->group("Address");

    app.add_option("--data", options.data_folder,
                   "folder that keeps invoices, keys and tokens over a restart; without it all is "
                   "forgotten")
        ->group("Contents");
    app.add_option(
           "--schemas", options.schema_folder,
           "folder with the published invoice schemas (*.xsd); invoices are then checked fully")
        ->check(existing_folder())
        ->group("Contents");
    app.add_option(
           "--token", options.tokens,
           "KSeF token to accept, reference|nip-NNNNNNNNNN|secret; may be repeated. Without it any "
           "token of that form is accepted")
        ->allow_extra_args(false)
        ->group("Contents");
    app.add_option("--certificate", options.certificate_files,
                   "file (PEM) with a KSeF certificate of a company, named by its subject; may be "
                   "repeated")
        ->allow_extra_args(false)
        ->check(existing_file())
        ->group("Contents");
    app.add_flag("--strict", options.strict,
                 "take only what is published, not what older clients send")
        ->group("Contents");
    app.add_flag(
           "--refuse-attachments", options.refuse_attachments,
           "answer 415 to invoices with attachments, as for a company that has not declared them")
        ->group("Contents");
    app.add_option("--access-token-minutes", options.access_token_minutes,
                   "validity of an access token")
        ->capture_default_str()
        ->check(CLI::Range(1, 1440))
        ->group("Contents");
    app.add_flag("--rotate-keys", options.rotate_keys,
                 "publish a second, newer certificate of each usage at start")
        ->group("Contents");

    add_pace(app, "auth", "authentication (100)", options.authentication);
    add_pace(app, "invoice", "invoice accepted (100)", options.invoice_accepted);
    add_pace(app, "invoice-processing", "invoice being processed (150)",
             options.invoice_processing);
    add_pace(app, "session", "session closing (170)", options.session_closing);

    app.add_flag("--rate-limits", options.rate_limits,
                 "enforce the published limits of requests (429)")
        ->group("Trouble");
    app.add_option(
           "--fault", fault_texts,
           "trouble at a step, for example \"step=auth/challenge kind=status status=500 count=1\"; "
           "may be repeated. docs/sandbox.md has the kinds")
        ->allow_extra_args(false)
        ->group("Trouble");
    app.add_flag("--list-steps", options.list_steps, "print the names of the steps and end")
        ->group("Trouble");

    app.add_option_function<std::string>(
           "--wire-order",
           [&options](const std::string& order) { options.classic_order = order == "classic"; },
           "order of members in lists of sessions and of their invoices: published, or classic for "
           "clients that read them by position")
        ->check(CLI::IsMember({"published", "classic"}))
        ->group("Output");
    app.add_option("--fraction-digits", options.time.fraction_digits,
                   "digits after the second in times")
        ->capture_default_str()
        ->check(CLI::Range(0, 7))
        ->group("Output");
    app.add_flag("--keep-zeros", keep_zeros, "do not drop zeros at the end of those digits")
        ->group("Output");
    app.add_option("--log-size", options.log_size, "how many of the last requests are remembered")
        ->capture_default_str()
        ->check(CLI::Range(1, 1'000'000))
        ->group("Output");
    app.add_flag("--quiet", options.quiet, "do not print each request")->group("Output");

    try {
        app.parse(count, arguments);
        options.time.trim_zeros = !keep_zeros;
        for (const std::string& text : fault_texts) {
            try {
                Fault fault = Fault::from_json(parse_fault_text(text));
                if (!is_step(fault.step))
                    throw std::invalid_argument("unknown step: " + fault.step +
                                                "; --list-steps names them");
                options.faults.push_back(std::move(fault));
            } catch (const std::exception& error) {
                throw CLI::ValidationError("--fault", error.what());
            }
        }
        if (!options.ca_file_out.empty() && !options.https)
            throw CLI::ValidationError("--ca-file-out", "needs --https");
    } catch (const CLI::ParseError& error) {
        return {std::nullopt, app.exit(error)};
    }
    return {std::move(options), 0};
}

}  // namespace tavrix::sandbox
