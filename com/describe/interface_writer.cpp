// Writes what the classes' tables say, for those who do not read tables: interface_writer KIND
// FILE. Runs during the build.

#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "com/describe/manifest.h"
#include "com/describe/reference_page.h"
#include "com/type_library.h"

namespace tavrix::com {
namespace {

void write_text(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path);
}

void write(const std::string& kind, const std::string& path) {
    if (kind == "type-library") return write_type_library(server(), base::from_utf8(path));
    if (kind == "manifest") return write_text(path, assembly_manifest(server(), "Tavrix.dll"));
    if (kind == "host-manifest") return write_text(path, host_manifest(server()));
    if (kind == "reference") return write_text(path, reference_page(server()));
    throw std::runtime_error("unknown kind " + kind);
}

}  // namespace
}  // namespace tavrix::com

int main(int argument_count, char** arguments) {
    if (argument_count != 3) return 2;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    try {
        tavrix::com::write(arguments[1], arguments[2]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "interface_writer: %s\n", error.what());
        return 1;
    }
    return 0;
}
