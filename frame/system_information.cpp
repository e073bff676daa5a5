#include "frame/system_information.h"

#include <algorithm>
#include <optional>

namespace tavrix::frame {
namespace {

using base::Text;

constexpr std::string_view tool_key = "SOFTWARE\\Microsoft\\Shared Tools\\MSINFO";
constexpr std::string_view folder_key = "SOFTWARE\\Microsoft\\Shared Tools Location";
constexpr std::size_t longest_path_bytes = 1024;

std::optional<Text> read_path(const SystemInformationPorts& ports, std::string_view sub_key,
                              std::string_view name) {
    const auto key =
        ports.registry.open(ports::RegistryRoot::local_machine, base::bytes_of(sub_key));
    if (!key) return std::nullopt;
    const auto value = key->query(base::bytes_of(name), longest_path_bytes);
    if (!value) return std::nullopt;
    Text path = ports.code_page.to_text(value->data);
    // The zero at the end; some programs store it twice.
    path.resize(std::min(path.size(), path.find(u'\0')));
    return value->type == ports::registry_expandable_text ? ports.shell.expand(path) : path;
}

std::optional<Text> find_tool(const SystemInformationPorts& ports) {
    if (auto tool = read_path(ports, tool_key, "PATH")) return tool;
    const auto folder = read_path(ports, folder_key, "MSINFO");
    if (!folder) return std::nullopt;
    const Text tool = *folder + u"\\MSINFO32.EXE";
    return ports.files.is_file(tool) ? std::optional(tool) : std::nullopt;
}

bool start_tool(const SystemInformationPorts& ports) noexcept {
    try {
        const auto tool = find_tool(ports);
        return tool && !tool->empty() && ports.shell.start(*tool);
    } catch (...) {
        return false;
    }
}

}  // namespace

void show_system_information(const SystemInformationPorts& ports) noexcept {
    if (start_tool(ports)) return;
    try {
        // Kept as users have always read it, the misspelling included.
        ports.shell.show_message(u"Brak zainstalownej opcji w Systemie Windows", 0);
    } catch (...) {
        // Nothing is left to tell it with.
    }
}

}  // namespace tavrix::frame
