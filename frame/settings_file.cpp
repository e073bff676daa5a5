#include "frame/settings_file.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
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
    bool flag() const {
        if (!value.is_boolean()) source.fail_at_key(key, "oczekiwano true albo false");
        return value.get<bool>();
    }
    // One of the names in `names`; gives the enumerator of the same place.
    template <typename Enum, std::size_t count>
    Enum choice(const std::array<const char*, count>& names) const {
        std::string expected;
        for (std::size_t i = 0; i < count; ++i) {
            if (value == names[i]) return static_cast<Enum>(i);
            expected += (i == 0 ? "\"" : "\" albo \"") + std::string(names[i]);
        }
        source.fail_at_key(key, "oczekiwano " + expected + "\"");
    }
    base::Profile profile() const {
        return choice<base::Profile>(std::array{"classic", "current"});
    }
    std::int32_t port() const {
        return static_cast<std::int32_t>(whole_number(1, 65'535, "portu"));
    }
    // What the JSON document holds of it is not wiped: it stands on the disk as well.
    base::SecretText secret() const { return base::from_secret_utf8(text()); }
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
    Key{"ksef.reconcile_by",
        [](Settings& s, const Reader& r) {
            s.ksef.reconcile_by = r.choice<ksef::ReconcileBy>(std::array{"position", "name"});
        }},
    Key{"ksef.skip_unavailable",
        [](Settings& s, const Reader& r) { s.ksef.skip_unavailable = r.flag(); }},
    Key{"ksef.batch_parts", [](Settings& s, const Reader& r) { s.ksef.batch_parts = r.flag(); }},
    Key{"qr.production", [](Settings& s, const Reader& r) { s.ksef.qr.production = r.origin(); }},
    Key{"qr.demo", [](Settings& s, const Reader& r) { s.ksef.qr.demo = r.origin(); }},
    Key{"qr.test", [](Settings& s, const Reader& r) { s.ksef.qr.test = r.origin(); }},
    Key{"qr.certificate_signature",
        [](Settings& s, const Reader& r) {
            s.ksef.certificate_signature =
                r.choice<ksef::CertificateSignature>(std::array{"base64", "base64url"});
        }},
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
    Key{"mail.smtp_server",
        [](Settings& s, const Reader& r) { s.mail.form_account.server = r.wide_text(); }},
    Key{"mail.smtp_port",
        [](Settings& s, const Reader& r) { s.mail.form_account.port = r.port(); }},
    Key{"mail.smtp_ssl", [](Settings& s, const Reader& r) { s.mail.form_account.ssl = r.flag(); }},
    Key{"mail.smtp_user",
        [](Settings& s, const Reader& r) { s.mail.form_account.user = r.wide_text(); }},
    Key{"mail.smtp_password",
        [](Settings& s, const Reader& r) { s.mail.form_account.password = r.secret(); }},
    Key{"mail.sender",
        [](Settings& s, const Reader& r) { s.mail.form_account.sender = r.wide_text(); }},
    Key{"trace.root", [](Settings& s, const Reader& r) { s.trace_root = r.text(); }},
};

// The rooms that a profile means something to. Each may have one of its own; the file's holds where
// it has none.
struct Room {
    const char* section;
    void (*take)(Settings&, base::Profile);
};

constexpr std::array rooms = {
    Room{"ksef", [](Settings& s, base::Profile p) { s.ksef = ksef::settings_of(p); }},
    Room{"mail", [](Settings& s, base::Profile p) { s.mail.profile = p; }},
    Room{"xml",
         [](Settings& s, base::Profile p) {
             s.ksef.schema_namespace = p == base::Profile::current ? ports::SchemaNamespace::its_own
                                                                   : ports::SchemaNamespace::empty;
         }},
};

constexpr const char* profile_key = "profile";

std::optional<base::Profile> profile_in(const Json& members, const Source& source,
                                        const std::string& key) {
    const auto found = members.is_object() ? members.find(profile_key) : members.end();
    if (found == members.end()) return std::nullopt;
    return Reader{source, key, *found}.profile();
}

// Before any other key, so that each of them wins over a profile wherever it stands.
void take_profiles(Settings& settings, const Source& source, const Json& document) {
    const auto of_file = profile_in(document, source, profile_key);
    for (const Room& room : rooms) {
        const std::string section = room.section;
        const auto members = document.find(section);
        const auto of_room = members == document.end()
                                 ? std::nullopt
                                 : profile_in(*members, source, section + "." + profile_key);
        room.take(settings, of_room ? *of_room : of_file.value_or(base::Profile::classic));
    }
}

bool is_profile(const std::string& section, const std::string& name) {
    return name == profile_key &&
           std::ranges::any_of(rooms, [&](const Room& room) { return section == room.section; });
}

bool is_section(const std::string& section) {
    return std::ranges::any_of(rooms, [&](const Room& room) { return section == room.section; }) ||
           std::ranges::any_of(keys, [&](const Key& key) {
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
    take_profiles(settings, source, document);
    for (const auto& [section, members] : document.items()) {
        if (section == profile_key) continue;
        if (!is_section(section)) source.fail_at_key(section, "nieznany klucz");
        if (!members.is_object()) source.fail_at_key(section, "oczekiwano obiektu");
        for (const auto& [name, value] : members.items()) {
            if (is_profile(section, name)) continue;
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
