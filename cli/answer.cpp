#include "cli/answer.h"

#include <iostream>

namespace tavrix::cli {

void add_json_option(CLI::App& command, bool& json) {
    command.add_flag("--json", json, "Wynik jako JSON (dla programów)");
}

void print(const Json& answer) {
    std::cout << answer.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace tavrix::cli
