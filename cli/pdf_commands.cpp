#include <iostream>
#include <iterator>
#include <memory>

#include "cli/command.h"
#include "cli/for_people.h"
#include "cli/ksef_options.h"
#include "cli/ports_bundle.h"
#include "pdfsign/sign.h"
#include "pdfsign/verify.h"

namespace tavrix::cli {
namespace {

struct SignOptions {
    std::string in;
    std::string out;
    std::string pfx;
    bool has_pin = false;
    std::string pin;
    std::string pin_file;
    bool pades = false;
};

struct VerifyOptions {
    std::string file;
    std::string authorities;
};

// What the system says does not name the file that it is about.
template <typename Work>
auto naming(const std::string& path, const char* fault, Work work) {
    try {
        return work();
    } catch (const base::AutomationError& error) {
        if (error.source() != u"open") throw;
        throw CLI::ValidationError(path, fault);
    }
}

// Another user of the machine sees the arguments of a process, but not its input.
base::SecretText pin_of(const SignOptions& options) {
    if (options.has_pin) return base::from_secret_utf8(options.pin);
    if (!options.pin_file.empty() && options.pin_file != "-") {
        return base::from_secret_utf8(read_secret_line(options.pin_file).view());
    }
    base::SecretUtf8 line;
    for (char c = 0; std::cin.get(c) && c != '\n';) line += c;
    const bool has_return = line.view().ends_with('\r');
    return base::from_secret_utf8(line.view().substr(0, line.size() - (has_return ? 1 : 0)));
}

ExitCode sign(const SignOptions& options) {
    PortsBundle bundle;
    const pdfsign::PdfPorts ports = bundle.for_pdf();
    constexpr const char* unreadable = "nie można odczytać pliku";
    auto document = naming(options.in, unreadable,
                           [&] { return pdfsign::PdfToSign(ports, base::from_utf8(options.in)); });
    const auto signer = naming(options.pfx, unreadable, [&] {
        return pdfsign::load_signer(ports, base::from_utf8(options.pfx), pin_of(options).view());
    });
    if (!signer->can_sign()) {
        std::cerr << "tym rodzajem klucza nie można podpisać: potrzebny RSA albo ECDSA\n";
        return exit_failed;
    }
    naming(options.out, "nie można zapisać pliku", [&] {
        document.sign(*signer, base::from_utf8(options.out),
                      options.pades ? pdfsign::Profile::pades : pdfsign::Profile::usual);
    });
    return exit_done;
}

void print_signature(const pdfsign::VerifiedSignature& signature, bool asked_for_trust) {
    std::cout << line_for_people(signature.field) << ": ";
    if (!signature.fault.empty()) {
        std::cout << line_for_people(signature.fault) << '\n';
        return;
    }
    const ports::SignatureFindings& found = signature.findings;
    std::cout << (found.intact ? "podpis prawidłowy" : "PODPIS NIEPRAWIDŁOWY") << ", "
              << line_for_people(found.signer) << " (wystawca: " << line_for_people(found.issuer)
              << "), " << line_for_people(signature.time);
    if (asked_for_trust) {
        std::cout << (found.trusted ? ", certyfikat zaufany" : ", CERTYFIKAT NIEZAUFANY");
    }
    if (signature.added_bytes == 0) {
        std::cout << ", obejmuje cały plik\n";
    } else {
        std::cout << ", po podpisie dopisano " << signature.added_bytes
                  << " bajtów, treść mogła się zmienić\n";
    }
}

// What came behind an older signature is covered by the newest one, or by none.
ExitCode verify(const VerifyOptions& options) {
    PortsBundle bundle;
    std::string trusted;
    if (!options.authorities.empty()) {
        const base::Bytes file = read_file(options.authorities);
        trusted = base::chars_of(file);
    }
    const pdfsign::PdfPorts ports = bundle.for_pdf();
    const auto file = naming(options.file, "nie można odczytać pliku",
                             [&] { return ports.files.open(base::from_utf8(options.file)); });
    const auto signatures = pdfsign::verify_pdf(*file, ports.signing, trusted);
    if (signatures.empty()) std::cout << "brak podpisów\n";
    bool all_good = true;
    bool covered = false;
    for (const pdfsign::VerifiedSignature& signature : signatures) {
        print_signature(signature, !options.authorities.empty());
        const bool good = signature.fault.empty() && signature.findings.intact &&
                          (options.authorities.empty() || signature.findings.trusted);
        all_good = all_good && good;
        covered = covered || (good && signature.added_bytes == 0);
    }
    return all_good && covered ? exit_done : exit_failed;
}

}  // namespace

void add_pdf_commands(CLI::App& app, int& exit_code) {
    auto signing = std::make_shared<SignOptions>();
    CLI::App* sign_pdf = app.add_subcommand("sign-pdf", "Podpisuje plik PDF certyfikatem z PFX");
    sign_pdf->add_option("in", signing->in, "Plik PDF")->required();
    sign_pdf->add_option("out", signing->out, "Plik podpisany; może być ten sam")->required();
    sign_pdf->add_option("--pfx", signing->pfx, "Plik PFX z certyfikatem i kluczem")->required();
    CLI::Option* pin = sign_pdf->add_option(
        "--pin", signing->pin, "Hasło pliku PFX; bezpieczniej --pin-file albo standardowe wejście");
    sign_pdf
        ->add_option("--pin-file", signing->pin_file,
                     "Plik, w którym jest tylko hasło; - albo nic: wiersz standardowego wejścia")
        ->excludes(pin);
    sign_pdf->add_flag("--pades", signing->pades,
                       "Podpis według PAdES (ETSI.CAdES.detached), czas tylko w dokumencie");
    sign_pdf->callback([signing, pin, &exit_code] {
        signing->has_pin = pin->count() > 0;
        exit_code = sign(*signing);
    });

    auto verifying = std::make_shared<VerifyOptions>();
    CLI::App* verify_pdf = app.add_subcommand("verify-pdf", "Sprawdza podpisy pliku PDF");
    verify_pdf->add_option("file", verifying->file, "Plik PDF")->required();
    verify_pdf->add_option("--ca", verifying->authorities,
                           "Certyfikaty zaufanych wystawców (PEM); bez tego zaufania nie sprawdza");
    verify_pdf->callback([verifying, &exit_code] { exit_code = verify(*verifying); });
}

}  // namespace tavrix::cli
