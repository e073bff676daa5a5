#include "frame/settings_file.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "base/error.h"

namespace tavrix::frame {
namespace {

using Json = nlohmann::ordered_json;
// Where in the file: JSON values do not know their lines, so a key's line is where its name stands.
class Source {
  public:
    Source(const std::string& text, const std::string& file) : text_(text), file_(file) {}

    [[noreturn]] void fail_at_line(std::size_t line, const std::string& what) const {
        throw base::AutomationError(
            base::ErrorNumber::component_failed, u"Tavrix.json",
            base::from_utf8(file_ + ", wiersz " + std::to_string(line) + ": " + what));
    }
    [[noreturn]] void fail_at_byte(std::size_t byte, const std::string& what) const {
        const auto end = text_.begin() + static_cast<std::ptrdiff_t>(std::min(byte, text_.size()));
        fail_at_line(static_cast<std::size_t>(std::count(text_.begin(), end, '\n')) + 1, what);
    }
    // `key` is dotted; its last name is looked for behind the ones before it.
    [[noreturn]] void fail_at_key(const std::string& key, const std::string& what) const {
        std::size_t at = 0;
        std::istringstream names(key);
        for (std::string name; std::getline(names, name, '.');) {
            const std::size_t found = text_.find("\"" + name + "\"", at);
            if (found != std::string::npos) at = found;
        }
        fail_at_byte(at, "klucz \"" + key + "\": " + what);
    }

  private:
    const std::string& text_;
    const std::string& file_;
};

struct Reader {
    const Source& source;
    const std::string& key;
    const Json& value;

    std::string text() const {
        if (!value.is_string()) source.fail_at_key(key, "oczekiwano tekstu");
        return value.get<std::string>();
    }
    base::Text wide_text() const { return base::from_utf8(text()); }
    base::Text origin() const {
        const std::string origin = text();
        const bool known_scheme = origin.starts_with("https://") || origin.starts_with("http://");
        if (!known_scheme || origin.ends_with('/')) {
            source.fail_at_key(key, "oczekiwano adresu http(s) bez ukośnika na końcu");
        }
        return base::from_utf8(origin);
    }
    base::Text path_root() const {
        const std::string root = text();
        if (!root.empty() && (!root.starts_with('/') || root.ends_with('/'))) {
            source.fail_at_key(key, "oczekiwano ścieżki od ukośnika, bez ukośnika na końcu");
        }
        return base::from_utf8(root);
    }
    std::int64_t whole_number(std::int64_t least, std::int64_t most, const char* unit) const {
        if (!value.is_number_integer() || value.get<std::int64_t>() < least ||
            value.get<std::int64_t>() > most) {
            source.fail_at_key(key, std::string("oczekiwano liczby ") + unit + " od " +
                                        std::to_string(least) + " do " + std::to_string(most));
        }
        return value.get<std::int64_t>();
    }
    std::chrono::milliseconds milliseconds() const {
        return std::chrono::milliseconds(whole_number(1, 86'400'000, "milisekund"));
    }
    // KSeF's access tokens are good for 15 minutes: after a longer wait there is nothing to repeat.
    std::chrono::seconds retry_after_limit() const {
        return std::chrono::seconds(whole_number(0, 900, "sekund"));
    }
    std::vector<mail::HelpdeskRoute> helpdesk_routes() const {
        if (!value.is_object()) source.fail_at_key(key, "oczekiwano obiektu NIP: adres");
        std::vector<mail::HelpdeskRoute> routes;
        for (const auto& [tax_number, address] : value.items()) {
            if (!address.is_string())
                source.fail_at_key(key + "." + tax_number, "oczekiwano tekstu");
            routes.push_back({base::remove_characters(base::from_utf8(tax_number), u"-"),
                              base::from_utf8(address.get<std::string>())});
        }
        return routes;
    }
};

struct Key {
    const char* name;
    void (*take)(Settings&, const Reader&);
};

// Every key there is; docs/settings.md says what each means.
constexpr std::array keys = {
    Key{"ksef.production",
        [](Settings& s, const Reader& r) { s.ksef.service.production = r.origin(); }},
    Key{"ksef.demo", [](Settings& s, const Reader& r) { s.ksef.service.demo = r.origin(); }},
    Key{"ksef.test", [](Settings& s, const Reader& r) { s.ksef.service.test = r.origin(); }},
    Key{"ksef.path_root", [](Settings& s, const Reader& r) { s.ksef.path_root = r.path_root(); }},
    Key{"ksef.retry_after_limit_s",
        [](Settings& s, const Reader& r) { s.ksef.retry_after_limit = r.retry_after_limit(); }},
    Key{"qr.production", [](Settings& s, const Reader& r) { s.ksef.qr.production = r.origin(); }},
    Key{"qr.demo", [](Settings& s, const Reader& r) { s.ksef.qr.demo = r.origin(); }},
    Key{"qr.test", [](Settings& s, const Reader& r) { s.ksef.qr.test = r.origin(); }},
    Key{"http.private_ca_file",
        [](Settings& s, const Reader& r) { s.connection.private_ca_file = r.text(); }},
    Key{"http.connect_timeout_ms",
        [](Settings& s, const Reader& r) { s.connection.connect_timeout = r.milliseconds(); }},
    Key{"http.no_progress_timeout_ms",
        [](Settings& s, const Reader& r) { s.connection.no_progress_timeout = r.milliseconds(); }},
    Key{"http.proxy", [](Settings& s, const Reader& r) { s.connection.proxy = r.text(); }},
    Key{"helpdesk.address",
        [](Settings& s, const Reader& r) { s.mail.helpdesk_address = r.wide_text(); }},
    Key{"helpdesk.routes",
        [](Settings& s, const Reader& r) { s.mail.helpdesk_routes = r.helpdesk_routes(); }},
    Key{"trace.root", [](Settings& s, const Reader& r) { s.trace_root = r.text(); }},
};

bool is_section(const std::string& section) {
    return std::ranges::any_of(keys, [&](const Key& key) {
        return std::string_view(key.name).starts_with(section + ".");
    });
}

void take_key(Settings& settings, const Source& source, const std::string& key, const Json& value) {
    for (const Key& known : keys) {
        if (key == known.name) return known.take(settings, {source, key, value});
    }
    source.fail_at_key(key, "nieznany klucz");
}

}  // namespace

Settings parse_settings(const std::string& text, const std::string& file) {
    const Source source(text, file);
    Json document;
    try {
        document = Json::parse(text);
    } catch (const Json::parse_error& error) {
        source.fail_at_byte(error.byte > 0 ? error.byte - 1 : 0, "to nie jest poprawny JSON");
    }
    if (!document.is_object()) source.fail_at_line(1, "oczekiwano obiektu JSON");
    Settings settings;
    for (const auto& [section, members] : document.items()) {
        if (!is_section(section)) source.fail_at_key(section, "nieznany klucz");
        if (!members.is_object()) source.fail_at_key(section, "oczekiwano obiektu");
        for (const auto& [name, value] : members.items()) {
            take_key(settings, source, section + "." + name, value);
        }
    }
    return settings;
}

Settings load_settings(const std::string& utf8_path) {
    const std::filesystem::path path(std::u8string(utf8_path.begin(), utf8_path.end()));
    std::error_code error;
    if (!std::filesystem::exists(path, error) && !error) return {};
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    if (!file) Source("", utf8_path).fail_at_line(1, "nie można odczytać pliku");
    return parse_settings(content.str(), utf8_path);
}

}  // namespace tavrix::frame
