#include "sandbox/documents/schemas.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlschemas.h>
#include <spdlog/spdlog.h>

#include <mutex>
#include <stdexcept>

#include "sandbox/basics/path.h"
#include "sandbox/basics/text.h"

namespace tavrix::sandbox {
namespace {

constexpr std::size_t most_errors = 20;

/// Folder the current thread may load from; nothing may be loaded while it is null.
thread_local const std::filesystem::path* readable_folder = nullptr;

/// Replaces libxml2's loader for the whole process: only a file of the open folder, named by the
/// last part of the address.
xmlParserInput* load_from_folder(const char* address, const char*, xmlParserCtxt* parser) {
    if (readable_folder == nullptr || address == nullptr) return nullptr;
    const std::string_view text = address;
    const std::filesystem::path file =
        *readable_folder / path_of(text.substr(text.find_last_of("/\\") + 1));
    return std::filesystem::is_regular_file(file)
               ? xmlNewInputFromFile(parser, utf8_of(file).c_str())
               : nullptr;
}

struct FolderOpen {
    explicit FolderOpen(const std::filesystem::path& folder) { readable_folder = &folder; }
    ~FolderOpen() { readable_folder = nullptr; }
};

struct FreeSchemaParser {
    void operator()(xmlSchemaParserCtxt* parser) const { xmlSchemaFreeParserCtxt(parser); }
};
struct FreeValidator {
    void operator()(xmlSchemaValidCtxt* validator) const { xmlSchemaFreeValidCtxt(validator); }
};

#if LIBXML_VERSION >= 21200
using ReportedError = const xmlError*;
#else
using ReportedError = xmlError*;
#endif

void collect_error(void* target, ReportedError error) {
    auto& errors = *static_cast<std::vector<std::string>*>(target);
    if (errors.size() >= most_errors || error->message == nullptr) return;
    std::string message = error->message;
    message.erase(message.find_last_not_of("\r\n ") + 1);
    errors.push_back("Wiersz " + std::to_string(error->line) + ": " + message);
}

}  // namespace

void SchemaFolder::FreeSchema::operator()(_xmlSchema* schema) const {
    xmlSchemaFree(schema);
}

SchemaFolder::SchemaFolder(std::filesystem::path folder) : folder_(std::move(folder)) {
    if (!std::filesystem::is_directory(folder_))
        throw std::runtime_error("no folder of schemas: " + utf8_of(folder_));
    static std::once_flag installed;
    std::call_once(installed, [] { xmlSetExternalEntityLoader(load_from_folder); });
}

SchemaFolder::~SchemaFolder() = default;

std::string SchemaFolder::schema_name(const FormCode& form) {
    std::string code = form.system_code;
    std::erase(code, ' ');
    return "Schemat_" + code + "_v" + form.schema_version + ".xsd";
}

_xmlSchema* SchemaFolder::schema_for(const FormCode& form) {
    const std::string name = schema_name(form);
    if (const auto known = schemas_.find(name); known != schemas_.end()) return known->second.get();

    std::filesystem::path file;
    for (const auto& entry : std::filesystem::directory_iterator(folder_))
        if (lower(utf8_of(entry.path().filename())) == lower(name)) file = entry.path();
    if (file.empty())
        spdlog::warn("no {} in {}: documents of {} are checked without a schema", name,
                     utf8_of(folder_), form.system_code);
    if (file.empty()) return schemas_.emplace(name, nullptr).first->second.get();

    std::vector<std::string> errors;
    const FolderOpen open(folder_);
    const std::unique_ptr<xmlSchemaParserCtxt, FreeSchemaParser> parser(
        xmlSchemaNewParserCtxt(utf8_of(file).c_str()));
    xmlSchemaSetParserStructuredErrors(parser.get(), collect_error, &errors);
    xmlSchema* schema = xmlSchemaParse(parser.get());
    if (schema == nullptr)
        throw std::runtime_error("cannot read the schema " + utf8_of(file) +
                                 (errors.empty() ? "" : ": " + errors.front()));
    return schemas_.emplace(name, schema).first->second.get();
}

std::vector<std::string> SchemaFolder::validate(const XmlDocument& document, const FormCode& form) {
    std::vector<std::string> errors;
    _xmlSchema* schema = schema_for(form);
    if (schema == nullptr) return errors;
    const std::unique_ptr<xmlSchemaValidCtxt, FreeValidator> validator(
        xmlSchemaNewValidCtxt(schema));
    xmlSchemaSetValidStructuredErrors(validator.get(), collect_error, &errors);
    const int result = xmlSchemaValidateDoc(validator.get(), document.get());
    if (result != 0 && errors.empty()) errors.emplace_back("Dokument jest niezgodny ze schematem.");
    return errors;
}

}  // namespace tavrix::sandbox
