#include "cli/path_checks.h"

#include <filesystem>

#include "base/path.h"

namespace tavrix::cli {

CLI::Validator existing_file() {
    return {[](const std::string& file) -> std::string {
                std::error_code ignored;
                const auto path = base::path_of(file);
                if (!std::filesystem::exists(path, ignored)) return "nie ma pliku " + file;
                return std::filesystem::is_directory(path, ignored) ? file + " to folder"
                                                                    : std::string();
            },
            "PLIK"};
}

CLI::Validator existing_folder() {
    return {[](const std::string& folder) {
                std::error_code ignored;
                return std::filesystem::is_directory(base::path_of(folder), ignored)
                           ? std::string()
                           : "nie ma folderu " + folder;
            },
            "FOLDER"};
}

}  // namespace tavrix::cli
