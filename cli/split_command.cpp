#include <iostream>
#include <memory>

#include "cli/answer.h"
#include "cli/command.h"
#include "cli/path_checks.h"
#include "cli/ports_bundle.h"
#include "ksef/split_file.h"

namespace tavrix::cli {

void add_split_command(CLI::App& app, int& exit_code) {
    struct Options {
        std::string file;
        std::string folder = ".";
        bool json = false;
    };
    auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand(
        "split", "Dzieli plik na części po 100 000 000 bajtów: PLIK.001, PLIK.002, ...");
    command->add_option("file", options->file, "Plik do podzielenia")
        ->required()
        ->check(existing_file());
    command->add_option("folder", options->folder, "Folder, w którym staną części")
        ->check(existing_folder())
        ->capture_default_str();
    add_json_option(*command, options->json);
    command->callback([options, &exit_code] {
        const auto pieces = ksef::split_file(PortsBundle().files(), base::from_utf8(options->file),
                                             base::from_utf8(options->folder));
        Json paths = Json::array();
        for (const base::Text& piece : pieces) {
            // The backslash between folder and name is what hosts see.
            std::string path = base::to_utf8(piece);
            path[options->folder.size()] = '/';
            if (!options->json) std::cout << path << '\n';
            paths.push_back(std::move(path));
        }
        if (options->json) print(paths);
        exit_code = exit_done;
    });
}

}  // namespace tavrix::cli
