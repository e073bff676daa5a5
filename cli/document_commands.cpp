#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "base/error.h"
#include "cli/command.h"
#include "cli/path_checks.h"
#include "cli/ports_bundle.h"
#include "ksef/invoice_documents.h"

namespace tavrix::cli {
namespace {

// The text of an XML file in UTF-8, its mark left out.
base::Text xml_in(const std::string& path) {
    const base::Bytes bytes = read_file(path);
    std::string_view chars = base::chars_of(bytes);
    if (chars.starts_with("\xEF\xBB\xBF")) chars.remove_prefix(3);
    auto text = base::from_valid_utf8(chars);
    if (!text) throw CLI::ValidationError(path, "plik nie jest tekstem w UTF-8");
    return std::move(*text);
}

std::string trimmed(const base::Text& reason) {
    std::string text = base::to_utf8(reason);
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    return text;
}

struct ValidateOptions {
    std::vector<std::string> files;
    std::string schema;
    bool json = false;
};

nlohmann::ordered_json as_json(const std::string& file, const ports::XmlValidation& validation) {
    auto errors = nlohmann::ordered_json::array();
    for (const ports::XmlError& error : validation.errors) {
        errors.push_back(
            {{"line", error.line}, {"column", error.column}, {"reason", trimmed(error.reason)}});
    }
    return {{"file", file}, {"valid", validation.errors.empty()}, {"errors", std::move(errors)}};
}

void print(const std::string& file, const ports::XmlValidation& validation) {
    for (const ports::XmlError& error : validation.errors) {
        std::cout << file << ':' << error.line << ':' << error.column << ": "
                  << trimmed(error.reason) << '\n';
    }
    if (validation.errors.empty()) std::cout << file << ": poprawny\n";
}

std::unique_ptr<ports::XmlSchema> load_schema(ports::XmlDocuments& documents,
                                              const std::string& path) {
    try {
        return documents.load_schema(base::from_utf8(path), ports::SchemaNamespace::its_own);
    } catch (const base::AutomationError& error) {
        throw CLI::ValidationError(path,
                                   "nie da się wczytać schematu: " + trimmed(error.description()));
    }
}

// One document is answered by an object, several by an array of them.
ExitCode validate(const ValidateOptions& options) {
    PortsBundle bundle;
    const auto schema = load_schema(bundle.xml_documents(), options.schema);
    auto answers = nlohmann::ordered_json::array();
    bool all_valid = true;
    for (const std::string& file : options.files) {
        const ports::XmlValidation validation = schema->validate(xml_in(file));
        all_valid = all_valid && validation.errors.empty();
        if (options.json) {
            answers.push_back(as_json(file, validation));
        } else {
            print(file, validation);
        }
    }
    if (options.json) {
        std::cout << (answers.size() == 1 ? answers.front() : answers).dump(2) << '\n';
    }
    return all_valid ? exit_done : exit_failed;
}

struct RenderOptions {
    std::string file;
    std::string stylesheet;
    std::string page;
    std::vector<std::string> parameters;
};

std::vector<std::pair<base::Text, base::Text>> parameters_of(const RenderOptions& options) {
    std::vector<std::pair<base::Text, base::Text>> parameters;
    for (const std::string& parameter : options.parameters) {
        const std::size_t equals = parameter.find('=');
        if (equals == std::string::npos || equals == 0)
            throw CLI::ValidationError("--param", "oczekiwano NAZWA=TEKST");
        parameters.emplace_back(base::from_utf8(parameter.substr(0, equals)),
                                base::from_utf8(parameter.substr(equals + 1)));
    }
    return parameters;
}

ExitCode render(const RenderOptions& options) {
    PortsBundle bundle;
    try {
        const ports::XmlTransformation page = bundle.xml_documents().transform(
            xml_in(options.file), xml_in(options.stylesheet), parameters_of(options));
        if (!page.stylesheet_reason.empty())
            throw CLI::ValidationError(options.stylesheet, trimmed(page.stylesheet_reason));
        const std::string html = ksef::html_page_utf8(page.output);
        const auto file =
            bundle.files().create(base::from_utf8(options.page), ports::Readers::everyone);
        file->write(base::bytes_of(html));
        file->keep();
    } catch (const base::AutomationError& error) {
        std::cerr << options.file << ": " << trimmed(error.description()) << '\n';
        return exit_failed;
    }
    return exit_done;
}

}  // namespace

void add_validate_command(CLI::App& app, int& exit_code) {
    auto options = std::make_shared<ValidateOptions>();
    CLI::App* command = app.add_subcommand(
        "validate", "Sprawdza dokumenty XML ze schematem; nic nie pobiera z sieci");
    command->add_option("files", options->files, "Dokumenty XML (UTF-8)")->required();
    command
        ->add_option("--schema", options->schema,
                     "Plik schematu (XSD); schematów, które dołącza, szuka w tym samym folderze")
        ->required()
        ->check(existing_file());
    command->add_flag("--json", options->json,
                      "Wynik jako JSON: obiekt, a dla kilku dokumentów tablica obiektów");
    command->callback([options, &exit_code] { exit_code = validate(*options); });
}

void add_render_command(CLI::App& app, int& exit_code) {
    auto options = std::make_shared<RenderOptions>();
    CLI::App* command =
        app.add_subcommand("render", "Robi z dokumentu XML stronę HTML arkuszem XSLT 1.0");
    command->add_option("file", options->file, "Dokument XML (UTF-8)")->required();
    command->add_option("--xsl", options->stylesheet, "Arkusz stylów (XSL)")->required();
    command->add_option("-o,--output", options->page, "Plik strony, np. faktura.html")->required();
    command->add_option("--param", options->parameters,
                        "Parametr arkusza, NAZWA=TEKST, np. ksef_number=...; można powtórzyć");
    command->callback([options, &exit_code] { exit_code = render(*options); });
}

}  // namespace tavrix::cli
