#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <iostream>
#include <memory>

#include "base/base64.h"
#include "base/error.h"
#include "base/path.h"
#include "cli/answer.h"
#include "cli/command.h"
#include "cli/path_checks.h"
#include "cli/ports_bundle.h"
#include "cli/zip_writer.h"
#include "ksef/batch_manifest.h"

namespace tavrix::cli {
namespace {

namespace fs = std::filesystem;

// What the service takes.
constexpr std::size_t most_invoices = 10'000;
constexpr std::uintmax_t largest_invoice_bytes = 3'000'000;
constexpr std::size_t longest_name = 128;
// Of the host.
constexpr std::array<std::string_view, 4> document_tables = {"dok_fak", "dok_KFA", "dok_dar",
                                                             "dok_kda"};

[[noreturn]] void refuse(const fs::path& file, const char* why) {
    throw CLI::ValidationError(base::utf8_of(file.filename()), why);
}

void check_name(const fs::path& file) {
    const std::string name = base::utf8_of(file.filename());
    const auto is_plain = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '.' || c == '-' || c == '_';
    };
    if (!name.ends_with(".xml") || name.starts_with('.') || !std::ranges::all_of(name, is_plain))
        refuse(file,
               "nazwa ma się składać z liter bez ogonków, cyfr, znaków . - _ i końcówki .xml");
    if (name.size() > longest_name) refuse(file, "nazwa jest dłuższa niż 128 znaków");
}

// In the order of their names, whatever order the disk gives them in.
std::vector<fs::path> invoices_in(const std::string& folder) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(base::path_of(folder))) {
        if (!entry.is_regular_file()) refuse(entry.path(), "w folderze mają być same faktury");
        check_name(entry.path());
        files.push_back(entry.path());
    }
    if (files.empty() || files.size() > most_invoices)
        refuse(base::path_of(folder), "w folderze ma być od 1 do 10 000 faktur");
    std::ranges::sort(files);
    return files;
}

// "dok_fak-1001.xml" is the invoice of document 1001 of dok_fak; a name of no such table, a year
// behind its hyphen perhaps, is no document's.
void name_document(ksef::ManifestEntry& entry) {
    const std::size_t hyphen = entry.file.find('-');
    if (hyphen == std::string::npos) return;
    const std::string table = entry.file.substr(0, hyphen);
    if (std::ranges::find(document_tables, table) == document_tables.end()) return;
    const char* const begin = entry.file.data() + hyphen + 1;
    const char* const end = entry.file.data() + entry.file.size() - 4;
    std::int32_t id = 0;
    const auto [stop, error] = std::from_chars(begin, end, id);
    if (error != std::errc() || stop != end) return;
    entry.table = base::from_utf8(table);
    entry.ddout_id = id;
}

struct PackOptions {
    std::string folder;
    std::string package;
    bool json = false;
};

ExitCode pack(const PackOptions& options) {
    PortsBundle bundle;
    const base::Text path = base::from_utf8(options.package);
    const auto package = bundle.files().create(path, ports::Readers::everyone);
    const auto manifest =
        bundle.files().create(path + base::Text(ksef::manifest_suffix), ports::Readers::everyone);
    ZipWriter zip(*package);
    std::vector<ksef::ManifestEntry> entries;
    for (const fs::path& file : invoices_in(options.folder)) {
        if (fs::file_size(file) == 0 || fs::file_size(file) > largest_invoice_bytes)
            refuse(file, "faktura ma mieć od 1 do 3 000 000 bajtów");
        const base::Bytes invoice = read_file(base::utf8_of(file));
        if (base::chars_of(invoice).starts_with("\xEF\xBB\xBF"))
            refuse(file, "faktura zaczyna się od znacznika BOM, którego KSeF nie przyjmuje");
        ksef::ManifestEntry entry;
        entry.file = base::utf8_of(file.filename());
        entry.hash = base::base64_encode(bundle.crypto().sha256(invoice));
        name_document(entry);
        zip.add(entry.file, invoice);
        entries.push_back(std::move(entry));
    }
    const std::uint64_t bytes = zip.finish();
    manifest->write(base::bytes_of(ksef::write_manifest(entries)));
    package->keep();
    manifest->keep();
    if (options.json) {
        print({{"package", options.package}, {"invoices", entries.size()}, {"bytes", bytes}});
    } else {
        std::cout << options.package << ": " << entries.size() << " faktur, " << bytes
                  << " bajtów\n";
    }
    return exit_done;
}

}  // namespace

void add_pack_command(CLI::App& app, int& exit_code) {
    auto options = std::make_shared<PackOptions>();
    CLI::App* command =
        app.add_subcommand("pack",
                           "Robi paczkę (ZIP) z folderu faktur i jej spis, po którym "
                           "`tavrix reconcile` poznaje dokumenty odrzuconej paczki");
    command
        ->add_option("folder", options->folder,
                     "Folder, w którym są same faktury; nazwa TABELA-KLUCZ.xml, np. "
                     "dok_fak-1001.xml, wskazuje dokument")
        ->required()
        ->check(existing_folder());
    command->add_option("package", options->package, "Plik paczki, np. paczka.zip")->required();
    add_json_option(*command, options->json);
    command->callback([options, &exit_code] { exit_code = pack(*options); });
}

}  // namespace tavrix::cli
