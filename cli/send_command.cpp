#include <iostream>
#include <memory>

#include "base/error.h"
#include "cli/answer.h"
#include "cli/command.h"
#include "cli/ksef_options.h"
#include "cli/open_database.h"
#include "cli/ports_bundle.h"
#include "ksef/rows/columns.h"

namespace tavrix::cli {
namespace {

using base::Text;

struct SendOptions {
    std::string nip;
    TokenSource token;
    std::string environment = "test";
    std::string xml_file;
    std::string database_file;
    std::string table;
    std::int32_t id = 0;
    FormOptions form;
    bool json = false;
};

constexpr std::u16string_view accepted_prefix = u"Faktura o numerze KSeF: ";

// The row's KSeF columns as they stand now; nothing when there is no row or no such table.
Json row_now(ports::Database& database, const SendOptions& options) {
    Json row = Json::object();
    try {
        Text columns;
        for (const ksef::Column& column : ksef::document_columns) {
            if (column.writer == ksef::Writer::library) columns += Text(column.name) + u',';
        }
        columns.pop_back();
        const auto rows = database.open(
            u"select top 1 " + columns + u" from " + base::from_utf8(options.table) + u" where " +
            Text(ksef::key_column) + u"=" + base::to_decimal(options.id));
        if (rows->at_end()) return nullptr;
        for (const ksef::Column& column : ksef::document_columns) {
            if (column.writer != ksef::Writer::library) continue;
            const std::string value = base::to_utf8(ports::text_of(rows->field(column.name)));
            if (column.field == ksef::Field::upo) {
                row["upo_bytes"] = value.size();
            } else {
                row[base::to_utf8(column.name)] = value;
            }
        }
    } catch (const base::AutomationError& error) {
        std::cerr << error.what() << '\n';
        return nullptr;
    }
    return row;
}

std::string ksef_number_in(const Json& row) {
    const Text column(ksef::column_of(ksef::Field::ksef_number).name);
    return row.is_object() ? row.value(base::to_utf8(column), "") : "";
}

// What failed after the number was recorded has a text of its own, which says nothing of the
// number: then the row does. A number from an earlier sending says nothing of this one; every
// acceptance leaves its new reference in the row. A duplicate gets the first one's number, and
// keeps the UPO that came with it.
ExitCode exit_code_of(const Text& result, const Json& before, const Json& now) {
    if (result.empty()) return exit_done;
    const bool recorded = before.is_object() && !ksef_number_in(now).empty() && now != before;
    if (recorded && ksef_number_in(now) == ksef_number_in(before) && now.value("upo_bytes", 0) > 0)
        return exit_done;
    return recorded || result.starts_with(accepted_prefix) ? exit_accepted_no_upo : exit_failed;
}

void report(const Text& result, ExitCode code, const Json& row, const SendOptions& options) {
    if (options.json) {
        Json answer;
        answer["result"] = base::to_utf8(result);
        answer["accepted"] = code != exit_failed;
        answer["upo_stored"] = code == exit_done;
        answer["row"] = row;
        print(answer);
        return;
    }
    if (code == exit_done) {
        std::cout << "Faktura przyjęta, UPO zapisane w bazie.\n";
    } else if (code == exit_accepted_no_upo) {
        std::cout << base::to_utf8(result) << "\nFaktura przyjęta, ale UPO nie udało się pobrać.\n";
    } else {
        std::cout << "Niepowodzenie: " << base::to_utf8(result) << '\n';
    }
    if (row.is_object()) {
        for (const auto& [column, value] : row.items()) {
            std::cout << "  " << column << " = "
                      << (value.is_string() ? value.get<std::string>() : value.dump()) << '\n';
        }
    }
}

ExitCode send(const SendOptions& options) {
    PortsBundle bundle;
    const base::SecretText token = token_from(options.token);
    const Text xml = bundle.code_page().to_text(read_file(options.xml_file));
    const auto opened = open_database(options.database_file);
    ports::Database& database = *opened;
    ksef::KseF_comm client(bundle.for_ksef());
    const Json before = row_now(database, options);
    const Text result = client.SendInvoiceToKSeF(
        database, base::from_utf8(options.nip), token, xml,
        base::from_utf8(options.form.system_code), base::from_utf8(options.form.schema_version),
        base::from_utf8(options.form.form_code), environment_number(options.environment),
        base::from_utf8(options.table), options.id);
    const Json row = row_now(database, options);
    const ExitCode code = exit_code_of(result, before, row);
    report(result, code, row, options);
    return code;
}

}  // namespace

void add_send_command(CLI::App& app, int& exit_code) {
    auto options = std::make_shared<SendOptions>();
    CLI::App* command =
        app.add_subcommand("send", "Wysyła jedną fakturę do KSeF i zapisuje wynik w bazie");
    add_nip_option(*command, options->nip);
    add_token_options(*command, options->token);
    add_environment_option(*command, options->environment);
    command->add_option("--xml", options->xml_file, "Plik XML faktury (UTF-8)")->required();
    add_database_option(*command, options->database_file);
    command->add_option("--table", options->table, "Tabela dokumentów, np. dok_fak")->required();
    command->add_option("--id", options->id, "Klucz dokumentu (kolumna ddout_id)")->required();
    add_form_options(*command, options->form);
    add_json_option(*command, options->json);
    command->callback([options, &exit_code] { exit_code = send(*options); });
}

}  // namespace tavrix::cli
