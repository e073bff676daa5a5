#include "cli/system_ports.h"

#include "cli/answer.h"
#include "ports/native/adapters.h"

namespace tavrix::cli {

std::unique_ptr<ports::Clock> make_clock() {
    return ports::make_native_clock();
}

std::unique_ptr<ports::CodePage> make_code_page() {
    return ports::make_native_code_page();
}

std::unique_ptr<ports::DataFiles> make_files(const std::string& drive_c) {
    return ports::make_native_files(drive_c);
}

std::unique_ptr<ports::FileStore> make_file_store() {
    return ports::make_native_file_store({});
}

std::unique_ptr<ports::TextFiles> make_text_files() {
    return ports::make_native_text_files({});
}

std::unique_ptr<ports::Database> open_ado(const std::string&) {
    throw Failure(exit_usage,
                  "Bazy podane tekstem połączenia ADO otwiera tylko tavrix.exe w Windows; tu "
                  "--db to plik SQLite");
}

}  // namespace tavrix::cli
