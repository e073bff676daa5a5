#include "com/describe/manifest.h"

#include "base/version.h"
#include "com/guid_text.h"

namespace tavrix::com {
namespace {

constexpr std::string_view architecture = sizeof(void*) == 8 ? "amd64" : "x86";

std::string escaped(base::TextView text) {
    std::string result;
    for (const char c : base::to_utf8(text)) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += c;
        }
    }
    return result;
}

std::string id_of(const GUID& id) {
    return base::to_utf8(text_of(id));
}

std::string number(int value) {
    return std::to_string(value);
}

// One attribute after another, each on the line it is given.
class Element {
  public:
    explicit Element(std::string_view begin) : xml_(begin) {}
    Element& with(std::string_view name, std::string_view value) {
        xml_.append(" ").append(name).append("=\"").append(value).append("\"");
        return *this;
    }
    std::string empty() const { return xml_ + "/>\n"; }
    std::string open() const { return xml_ + ">\n"; }

  private:
    std::string xml_;
};

std::string identity(const std::string& indent, const Server& server) {
    // Windows wants four numbers.
    const std::string version = number(base::version_major) + "." + number(base::version_minor) +
                                "." + number(base::version_revision) + ".0";
    return Element(indent + "<assemblyIdentity")
        .with("type", "win32")
        .with("name", escaped(server.library))
        .with("version", version)
        .with("processorArchitecture", architecture)
        .empty();
}

std::string creatable_class(const Server& server, const ClassTable& table) {
    const std::string prog_id = escaped(server.library) + "." + escaped(table.name);
    return Element("    <comClass")
               .with("clsid", id_of(table.class_id))
               .with("threadingModel", "Apartment")
               .with("progid", prog_id)
               .with("tlbid", id_of(server.type_library_id))
               .with("description", escaped(table.help))
               .open() +
           "      <progid>" + prog_id + "." + number(server.version_major) + "</progid>\n" +
           "    </comClass>\n";
}

// The system's own proxy for dispatch interfaces, as in the registry.
std::string dispatch_interface(const Server& server, const GUID& id, const base::Text& name) {
    return Element("  <comInterfaceExternalProxyStub")
        .with("name", escaped(name))
        .with("iid", id_of(id))
        .with("proxyStubClsid32", "{00020420-0000-0000-C000-000000000046}")
        .with("tlbid", id_of(server.type_library_id))
        .empty();
}

constexpr std::string_view begin =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
    "<assembly xmlns=\"urn:schemas-microsoft-com:asm.v1\" manifestVersion=\"1.0\">\n";

}  // namespace

std::string assembly_manifest(const Server& server, const std::string& file_name) {
    std::string xml(begin);
    xml += identity("  ", server);
    xml += Element("  <file").with("name", file_name).open();
    for (const CreatableClass& creatable : server.classes) {
        xml += creatable_class(server, creatable.table);
    }
    xml += Element("    <typelib")
               .with("tlbid", id_of(server.type_library_id))
               .with("version", number(server.version_major) + ".0")
               .with("helpdir", "")
               .empty();
    xml += "  </file>\n";
    for (const CreatableClass& creatable : server.classes) {
        const ClassTable& table = creatable.table;
        xml += dispatch_interface(server, table.interface_id, interface_name(table));
        if (table.events == nullptr) continue;
        xml += dispatch_interface(server, table.events->interface_id, event_interface_name(table));
    }
    return xml + "</assembly>\n";
}

std::string host_manifest(const Server& server) {
    return std::string(begin) +
           "  <!-- Example: host.exe.manifest beside host.exe, with the DLL in the same folder.\n"
           "       Name and version of the program are its own. -->\n" +
           Element("  <assemblyIdentity")
               .with("type", "win32")
               .with("name", "Firma.Program")
               .with("version", "1.0.0.0")
               .with("processorArchitecture", architecture)
               .empty() +
           "  <dependency>\n    <dependentAssembly>\n" + identity("      ", server) +
           "    </dependentAssembly>\n  </dependency>\n</assembly>\n";
}

}  // namespace tavrix::com
