#include <iostream>
#include <memory>

#include "base/error.h"
#include "cli/answer.h"
#include "cli/command.h"
#include "cli/ksef_options.h"
#include "cli/ports_bundle.h"
#include "console/console.h"
#include "ksef/encoding.h"
#include "ksef/environment.h"
#include "ksef/verification_links.h"

namespace tavrix::cli {
namespace {

using base::Text;

// What both links are made of.
struct InvoiceOptions {
    std::string seller;
    std::string environment = "test";
    std::string xml_file;
    std::string hash;
    bool as_send = false;
    bool json = false;
};

struct CertificateOptions {
    InvoiceOptions invoice;
    std::string context_type = "Nip";
    std::string context;
    std::string serial;
    std::string key_file;
    std::string pass_phrase_file;
    bool base64 = false;
};

constexpr std::size_t smallest_rsa_signature = 256;  // 2048 bits, published

std::string ten_digits(std::string& value) {
    std::erase(value, '-');
    const bool good =
        value.size() == 10 && value.find_first_not_of("0123456789") == std::string::npos;
    return good ? "" : "NIP ma 10 cyfr";
}

std::string sixteen_hexadecimal_digits(std::string& value) {
    for (char& c : value) {
        if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 'a' + 'A');
    }
    const bool good =
        value.size() == 16 && value.find_first_not_of("0123456789ABCDEF") == std::string::npos;
    return good ? "" : "numer seryjny certyfikatu KSeF ma 16 cyfr szesnastkowych";
}

std::string one_path_element(std::string& value) {
    for (const char c : value) {
        if (c <= ' ' || c == '/' || c == '?' || c == '#' || c == '%' || c >= 0x7F)
            return "znak, którego nie może być w odnośniku";
    }
    return {};
}

std::string invoice_hash(std::string& value) {
    return ksef::is_invoice_hash(base::from_utf8(value)) ? ""
                                                         : "oczekiwano SHA-256 w Base64, 44 znaki";
}

Text hash_of(PortsBundle& bundle, const InvoiceOptions& options) {
    if (!options.hash.empty()) return base::from_utf8(options.hash);
    base::Bytes invoice = read_file(options.xml_file);
    if (options.as_send) {
        invoice = ksef::invoice_bytes(bundle.code_page(), bundle.code_page().to_text(invoice));
    }
    return base::from_utf8(ksef::sha256_base64(bundle.crypto(), invoice));
}

const Text& origin_of(const ksef::Settings& settings, const InvoiceOptions& options) {
    return ksef::base_address(settings.qr, environment_number(options.environment));
}

void print_link(const Text& link, const std::string& signed_part, bool json) {
    if (!json) {
        std::cout << base::to_utf8(link) << '\n';
        return;
    }
    Json answer{{"link", base::to_utf8(link)}};
    if (!signed_part.empty()) answer["signed"] = signed_part;
    print(answer);
}

ExitCode make_invoice_link(const InvoiceOptions& options, const std::string& issued) {
    const auto date = base::parse_date_time(base::from_utf8(issued));
    if (!date || issued.size() != 10)
        throw CLI::ValidationError("--date", "oczekiwano daty RRRR-MM-DD");
    PortsBundle bundle;
    const ksef::KsefPorts ports = bundle.for_ksef();
    print_link(ksef::invoice_link(origin_of(ports.settings, options),
                                  base::from_utf8(options.seller), *date, hash_of(bundle, options)),
               {}, options.json);
    return exit_done;
}

base::SecretUtf8 pass_phrase_from(const std::string& file) {
    if (!file.empty()) return read_secret_line(file);
    const char* variable = console::variable("TAVRIX_KEY_PASS");
    return base::SecretUtf8(std::string_view(variable == nullptr ? "" : variable));
}

base::Bytes sign(ports::Crypto& crypto, const ports::PrivateKey& key, const Text& link) {
    if (!key.curve().empty()) return ksef::sign_link(crypto, key, link);
    base::Bytes signature =
        crypto.rsa_pss_sha256_sign(key, base::bytes_of(ksef::signed_part(link)));
    if (signature.size() < smallest_rsa_signature) {
        throw base::AutomationError(base::ErrorNumber::component_failed, u"certlink",
                                    u"klucz RSA ma mniej niż 2048 bitów");
    }
    return signature;
}

// Neither asks the service nor needs a token: the link is for the time when neither helps.
ExitCode make_certificate_link(const CertificateOptions& options) {
    PortsBundle bundle;
    const ksef::KsefPorts ports = bundle.for_ksef();
    const auto form =
        options.base64 ? ksef::CertificateSignature::base64 : ksef::CertificateSignature::base64url;
    const Text seller = base::from_utf8(options.invoice.seller);
    const Text type = options.context_type == "Nip" ? Text(ksef::tax_number_context(form))
                                                    : base::from_utf8(options.context_type);
    const Text context = options.context.empty() ? seller : base::from_utf8(options.context);
    const Text link =
        ksef::unsigned_link({origin_of(ports.settings, options.invoice), type, context, seller,
                             base::from_utf8(options.serial), hash_of(bundle, options.invoice)});
    const ksef::LinkKey read =
        ksef::read_link_key(bundle.crypto(), read_secret_file(options.key_file),
                            pass_phrase_from(options.pass_phrase_file));
    if (!read.key) throw Failure(exit_usage, base::to_utf8(read.failure));
    try {
        print_link(ksef::with_signature(link, sign(bundle.crypto(), *read.key, link), form),
                   ksef::signed_part(link), options.invoice.json);
    } catch (const base::AutomationError& error) {
        throw Failure(exit_usage, base::to_utf8(error.description()));
    }
    return exit_done;
}

void add_invoice_options(CLI::App& command, InvoiceOptions& options) {
    command.add_option("--nip", options.seller, "NIP sprzedawcy")
        ->required()
        ->transform(CLI::Validator(ten_digits, "NIP"));
    CLI::Option_group* invoice = command.add_option_group("faktura", "Jedno z dwojga");
    CLI::Option* file = invoice->add_option("--xml", options.xml_file,
                                            "Plik XML faktury, liczony bajt po bajcie, jak jest");
    invoice->add_option("--hash", options.hash, "Skrót faktury, jak z tavrix hash")
        ->check(CLI::Validator(invoice_hash, "BASE64"));
    invoice->require_option(1);
    command
        .add_flag("--as-send", options.as_send,
                  "Skrót tego, co wysłałby tavrix send: bez BOM, końce wierszy LF")
        ->needs(file);
    add_environment_option(command, options.environment);
    add_json_option(command, options.json);
}

void add_invoicelink(CLI::App& app, int& exit_code) {
    struct Options {
        InvoiceOptions invoice;
        std::string issued;
    };
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand(
        "invoicelink", "Odnośnik pierwszego kodu QR: sprawdzenie faktury w KSeF");
    add_invoice_options(*command, options->invoice);
    command->add_option("--date", options->issued, "Data wystawienia (P_1), RRRR-MM-DD")
        ->required();
    command->callback([options, &exit_code] {
        exit_code = make_invoice_link(options->invoice, options->issued);
    });
}

void add_certlink(CLI::App& app, int& exit_code) {
    auto options = std::make_shared<CertificateOptions>();
    CLI::App* command = app.add_subcommand(
        "certlink",
        "Odnośnik drugiego kodu QR faktury offline: kto ją wystawił; bez sieci i bez tokenu");
    add_invoice_options(*command, options->invoice);
    command->add_option("--context-type", options->context_type, "Rodzaj kontekstu")
        ->check(CLI::IsMember({"Nip", "InternalId", "NipVatUe", "PeppolId"}))
        ->capture_default_str();
    command
        ->add_option("--context", options->context,
                     "Kontekst, w którym faktura trafi do KSeF; bez tego NIP sprzedawcy")
        ->check(CLI::Validator(one_path_element, "TEKST"));
    command->add_option("--serial", options->serial, "Numer seryjny certyfikatu typu Offline")
        ->required()
        ->transform(CLI::Validator(sixteen_hexadecimal_digits, "HEX"));
    command
        ->add_option("--key", options->key_file,
                     "Klucz prywatny certyfikatu (PEM): EC P-256 albo RSA od 2048 bitów")
        ->required();
    command->add_option("--key-pass-file", options->pass_phrase_file,
                        "Plik z hasłem klucza; bez tego zmienna TAVRIX_KEY_PASS");
    command->add_flag("--base64", options->base64,
                      "Podpis w Base64 i NIP wielkimi literami, jak GetQr2 bez ustawień");
    command->callback([options, &exit_code] {
        if (options->context.empty() && options->context_type != "Nip")
            throw CLI::RequiredError("--context");
        exit_code = make_certificate_link(*options);
    });
}

}  // namespace

void add_link_commands(CLI::App& app, int& exit_code) {
    add_invoicelink(app, exit_code);
    add_certlink(app, exit_code);
}

}  // namespace tavrix::cli
