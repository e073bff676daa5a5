// Validation against published schemas kept in a folder.
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "sandbox/basics/xml.h"
#include "sandbox/store/model.h"

struct _xmlSchema;

namespace tavrix::sandbox {

/// The schemas of one folder. What a schema imports is looked for there by file name, whatever
/// address the import names: nothing is ever fetched. Each schema is read once, on first use.
class SchemaFolder {
  public:
    /// Throws std::runtime_error when the path is not a folder.
    explicit SchemaFolder(std::filesystem::path folder);
    ~SchemaFolder();

    /// Texts of what does not agree, at most twenty; empty for a valid document and for a form
    /// whose schema is not in the folder (`schemat_FA(3)_v1-0E.xsd` for FA (3), 1-0E), which the
    /// log says once. Throws
    /// std::runtime_error when a schema itself cannot be read.
    std::vector<std::string> validate(const XmlDocument& document, const FormCode& form);

    /// Name of the schema of a form, as confirmations print it: `Schemat_FA(3)_v1-0E.xsd`.
    static std::string schema_name(const FormCode& form);

  private:
    _xmlSchema* schema_for(const FormCode& form);

    struct FreeSchema {
        void operator()(_xmlSchema* schema) const;
    };
    std::filesystem::path folder_;
    std::map<std::string, std::unique_ptr<_xmlSchema, FreeSchema>> schemas_;
};

}  // namespace tavrix::sandbox
