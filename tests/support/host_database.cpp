#include "tests/support/host_database.h"

#include <fstream>
#include <iterator>
#include <regex>

#include "ports/native/adapters.h"

namespace tavrix::test {
namespace {

std::string read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

std::shared_ptr<ports::SqliteConnection> make_host_database(const std::string& issue_date) {
    auto connection = ports::SqliteConnection::open(":memory:", true);
    connection->execute_script(demonstration_schema());
    connection->execute_script("update dok_fak set ddout_data_wyst='" + issue_date +
                               "' where ddout_id=1001");
    return connection;
}

std::string demonstration_schema() {
    return std::regex_replace(read(TAVRIX_DEMO_FOLDER "/schema.sql"), std::regex(R"(\(max\))"), "");
}

std::string demonstration_invoice_file() {
    return read(TAVRIX_DEMO_FOLDER "/faktura.xml");
}

base::Text demonstration_invoice() {
    return ports::make_native_code_page()->to_text(base::bytes_of(demonstration_invoice_file()));
}

}  // namespace tavrix::test
