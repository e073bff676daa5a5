#include "cli/system_ports.h"

#include "ports/windows/adapters.h"
#include "ports/windows/ado_database.h"
#include "ports/windows/polish_code_page.h"

namespace tavrix::cli {
namespace {

/// ADO and the scripting runtime live in an apartment; this is the main thread's, for as long as
/// the process.
void need_apartment() {
    struct Apartment {
        Apartment() { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
        ~Apartment() { CoUninitialize(); }
    };
    static const Apartment apartment;
}

}  // namespace

std::unique_ptr<ports::Clock> make_clock() {
    return ports::make_windows_clock();
}

std::unique_ptr<ports::CodePage> make_code_page() {
    return ports::make_polish_code_page();
}

std::unique_ptr<ports::DataFiles> make_files(const std::string&) {
    return ports::make_windows_files();
}

std::unique_ptr<ports::FileStore> make_file_store() {
    return ports::make_windows_file_store();
}

std::unique_ptr<ports::TextFiles> make_text_files() {
    need_apartment();
    return ports::make_windows_text_files();
}

std::unique_ptr<ports::Database> open_ado(const std::string& connection_text) {
    need_apartment();
    const auto connection = windows::LateBound::create(u"ADODB.Connection");
    connection.call(u"Open", base::from_utf8(connection_text));
    return std::make_unique<windows::AdoDatabase>(
        windows::ComPointer<IDispatch>(connection.dispatch()));
}

}  // namespace tavrix::cli
