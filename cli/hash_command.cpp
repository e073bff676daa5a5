#include <iostream>
#include <memory>

#include "cli/command.h"
#include "cli/ports_bundle.h"
#include "ksef/encoding.h"

namespace tavrix::cli {

void add_hash_command(CLI::App& app, int& exit_code) {
    struct Options {
        std::vector<std::string> files;
    };
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand("hash",
                                           "Skrót faktury (SHA-256, Base64) i jej rozmiar tak, jak "
                                           "je dostaje KSeF: bez BOM, końce wierszy LF");
    command->add_option("pliki", options->files, "Pliki XML")->required();
    command->callback([options, &exit_code] {
        PortsBundle bundle;
        for (const std::string& file : options->files) {
            const base::Text content = bundle.code_page().to_text(read_file(file));
            const base::Bytes invoice = ksef::invoice_bytes(bundle.code_page(), content);
            std::cout << ksef::sha256_base64(bundle.crypto(), invoice) << "  " << invoice.size()
                      << "  " << file << '\n';
        }
        exit_code = exit_done;
    });
}

}  // namespace tavrix::cli
