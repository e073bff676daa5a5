#include "ports/native/xml/limits.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxslt/security.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <mutex>

#include "base/path.h"
#include "ports/native/xml/block_size.h"

namespace tavrix::ports {
namespace {

using namespace std::string_view_literals;

using SteadyClock = std::chrono::steady_clock;

struct Allowance {
    bool is_limited = false;
    const char16_t* refusal = u"";
    std::size_t memory_bytes = 0;
    std::string folder;
    SteadyClock::time_point end;
    std::size_t calls = 0;
};
thread_local Allowance allowance;

// Schemas of one folder import each other; none is as long.
constexpr std::streamoff longest_schema_bytes = 20'000'000;

// Work on long texts asks seldom, work on many short ones often.
bool is_time_to_look(std::size_t bytes) {
    return bytes > 64 * 1024 || ++allowance.calls % 1024 == 0;
}

bool refuses(std::size_t bytes) {
    if (!allowance.is_limited) return false;
    if (bytes > allowance.memory_bytes) {
        allowance.refusal = u"Dokument wymaga zbyt wiele pamięci.\r\n";
        return true;
    }
    if (is_time_to_look(bytes) && SteadyClock::now() > allowance.end) allowance.memory_bytes = 0;
    if (allowance.memory_bytes > 0) return false;
    if (*allowance.refusal == u'\0')
        allowance.refusal = u"Praca nad dokumentem trwa zbyt długo.\r\n";
    return true;
}

// What the system made of what was asked for; it comes back with the block.
void* charged(void* block) {
    if (allowance.is_limited && block != nullptr)
        allowance.memory_bytes -= std::min(allowance.memory_bytes, block_size(block));
    return block;
}

std::size_t size_of(void* block) {
    return block == nullptr ? 0 : block_size(block);
}

void* allocate(std::size_t bytes) {
    return refuses(bytes) ? nullptr : charged(std::malloc(bytes));
}

void release(void* block) {
    if (allowance.is_limited && *allowance.refusal == u'\0')
        allowance.memory_bytes += size_of(block);
    std::free(block);
}

void* reallocate(void* block, std::size_t bytes) {
    const std::size_t before = size_of(block);
    if (bytes > before && refuses(bytes - before)) return nullptr;
    void* const moved = std::realloc(block, bytes);
    if (moved == nullptr) return nullptr;
    if (allowance.is_limited) allowance.memory_bytes += before;
    return charged(moved);
}

char* duplicate(const char* text) {
    const std::size_t bytes = std::strlen(text) + 1;
    void* const copy = allocate(bytes);
    return copy == nullptr ? nullptr : static_cast<char*>(std::memcpy(copy, text, bytes));
}

xmlExternalEntityLoader usual_loader = nullptr;

xmlParserInputPtr load(const char* address, const char* id, xmlParserCtxtPtr parser) {
    if (!allowance.is_limited) return usual_loader(address, id, parser);
    if (allowance.folder.empty() || address == nullptr) return nullptr;
    std::string name(address);
    name.erase(0, name.find_last_of("/\\") + 1);
    if (name.empty() || name == "..") return nullptr;
    std::ifstream file(base::path_of(allowance.folder + name), std::ios::binary | std::ios::ate);
    if (!file || file.tellg() > longest_schema_bytes) return nullptr;
    file.seekg(0);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    // Its entities would be expanded, so it has none; in two bytes for a letter nobody would see.
    const bool is_wide = text.substr(0, 4).find_first_of("\xFE\xFF\0"sv) != std::string::npos;
    if (is_wide || text.find("<!DOCTYPE") != std::string::npos) return nullptr;
    xmlParserInputBufferPtr buffer = xmlParserInputBufferCreateMem(
        text.data(), static_cast<int>(text.size()), XML_CHAR_ENCODING_NONE);
    if (buffer == nullptr) return nullptr;
    xmlParserInputPtr input = xmlNewIOInputStream(parser, buffer, XML_CHAR_ENCODING_NONE);
    if (input == nullptr) {
        xmlFreeParserInputBuffer(buffer);
        return nullptr;
    }
    // Where relative names begin, and what errors name; the library frees it.
    input->filename = reinterpret_cast<char*>(
        xmlStrdup(reinterpret_cast<const xmlChar*>((allowance.folder + name).c_str())));
    return input;
}

// Sheets are other people's as well: they read no files and write none. Including and importing
// ask what holds by default, so it is forbidden for every sheet of the process.
void forbid_everything_to_stylesheets() {
    static xsltSecurityPrefsPtr const nothing = [] {
        xsltSecurityPrefsPtr preferences = xsltNewSecurityPrefs();
        for (const xsltSecurityOption option :
             {XSLT_SECPREF_READ_FILE, XSLT_SECPREF_WRITE_FILE, XSLT_SECPREF_CREATE_DIRECTORY,
              XSLT_SECPREF_READ_NETWORK, XSLT_SECPREF_WRITE_NETWORK}) {
            xsltSetSecurityPrefs(preferences, option, xsltSecurityForbid);
        }
        return preferences;
    }();
    xsltSetDefaultSecurityPrefs(nothing);
}

std::once_flag installed;

}  // namespace

XmlLimits::XmlLimits(std::string folder) {
    std::call_once(installed, [] {
        // They end in malloc and free like the library's own, so what it holds already stays right.
        xmlMemSetup(release, allocate, reallocate, duplicate);
        xmlInitParser();
        usual_loader = xmlGetExternalEntityLoader();
        xmlSetExternalEntityLoader(load);
        forbid_everything_to_stylesheets();
    });
    allowance = {true, u"", most_memory_bytes, std::move(folder), SteadyClock::now() + longest};
}

XmlLimits::~XmlLimits() {
    allowance = {};
}

base::Text XmlLimits::refusal() const {
    return allowance.refusal;
}

}  // namespace tavrix::ports
