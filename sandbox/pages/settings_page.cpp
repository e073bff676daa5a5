#include "sandbox/pages/settings_page.h"

#include <algorithm>
#include <stdexcept>

#include "sandbox/basics/text.h"
#include "sandbox/basics/xml.h"
#include "sandbox/pages/html.h"
#include "sandbox/pages/polish.h"
#include "sandbox/service/pace_limits.h"
#include "sandbox/service/purchases.h"

namespace tavrix::sandbox {
namespace {

struct PaceRow {
    /// Begins the names of its two fields.
    const char* name;
    const char* title;
    Pace Options::*pace;
};

constexpr PaceRow pace_rows[] = {
    {"uwierzytelnianie", "Uwierzytelnianie (100)", &Options::authentication},
    {"przyjecie", "Przyjęcie faktury (100)", &Options::invoice_accepted},
    {"przetwarzanie", "Przetwarzanie faktury (150)", &Options::invoice_processing},
    {"zamykanie", "Zamykanie sesji (170)", &Options::session_closing},
};

bool slows(const Pace& pace) {
    return pace.polls > 0 || pace.delay_ms > 0;
}

std::string pace_text(const Pace& pace) {
    std::string text;
    if (pace.delay_ms > 0) text = count_text(std::uint64_t(pace.delay_ms)) + " ms";
    if (pace.polls > 0)
        text += (text.empty() ? "" : ", ") + std::string("zapytań bez wyniku: ") +
                count_text(std::uint64_t(pace.polls));
    return text;
}

/// True until a fault has hit as often as it was told to.
bool is_active(const Json& fault) {
    const int count = fault.at("count");
    return count < 0 || fault.at("hits").get<int>() < count;
}

std::size_t active_faults(const Json& faults) {
    return std::size_t(std::count_if(faults.begin(), faults.end(), is_active));
}

std::string number_field(const std::string& name, const std::string& label, int value, int most) {
    return "<label>" + label + "<input type=\"number\" name=\"" + name + "\" min=\"0\" max=\"" +
           std::to_string(most) + "\" value=\"" + std::to_string(value) + "\" required></label>";
}

std::string form(const std::string& action, const std::string& fields, const std::string& button) {
    return "<form method=\"post\" action=\"/ustawienia/" + action + "\">" + fields +
           "<button type=\"submit\">" + button + "</button></form>";
}

std::string pace_section(const Options& options) {
    std::string fields;
    for (const auto& [name, title, member] : pace_rows) {
        const Pace& pace = options.*member;
        fields += std::string("<fieldset><legend>") + title + "</legend>" +
                  number_field(std::string(name) + "-ms", "trwa milisekund", pace.delay_ms,
                               longest_delay_ms) +
                  number_field(std::string(name) + "-zapytania", "zapytań bez wyniku", pace.polls,
                               most_polls) +
                  "</fieldset>";
    }
    return section("Tempo",
                   "<p class=\"note\">Jak długo każdy etap odpowiada „jeszcze nie”. Zera: od razu "
                   "gotowe.</p>" +
                       form("tempo", "<div class=\"paces\">" + fields + "</div>", "Zapisz tempo"));
}

std::string fault_table(const Json& faults) {
    Table table("Usterki", {{"Krok"},
                            {"Rodzaj"},
                            {"Najpierw przepuszcza", true},
                            {"Ma trafić", true},
                            {"Trafiła", true},
                            {"Stan"}});
    for (const Json& fault : faults) {
        const int count = fault.at("count");
        const auto number = [&](const char* name) {
            return count_text(std::uint64_t(fault.at(name).get<int>()));
        };
        table.row(
            {"<span class=\"mono\">" + xml_escape(fault.at("step").get<std::string>()) + "</span>",
             xml_escape(fault.at("kind").get<std::string>()), number("skip"),
             count < 0 ? "zawsze" : number("count"), number("hits"),
             is_active(fault) ? badge("wait", "czynna") : badge("ok", "wyczerpana")});
    }
    return table.html();
}

std::string fault_section(const Json& faults) {
    const std::string html =
        faults.empty() ? "<p class=\"empty\">Nie ustawiono żadnej usterki.</p>"
                       : fault_table(faults) + form("usterki/usun", "", "Usuń wszystkie usterki");
    return section(
        "Usterki",
        live("usterki", html) + "<h3>Nowa usterka</h3>" +
            form("usterki",
                 "<label class=\"wide\">Opis, jak po opcji <code>--fault</code>, na przykład "
                 "<code>step=sessions/online/invoices kind=drop</code>"
                 "<input name=\"opis\" required maxlength=\"2000\" autocomplete=\"off\"></label>",
                 "Dodaj usterkę"));
}

/// A field of a form, as browsers send it; empty when it is not there.
std::string field_of(const Request& request, std::string_view wanted) {
    for (std::string_view rest = request.body; !rest.empty();) {
        const std::string_view pair = rest.substr(0, rest.find('&'));
        rest.remove_prefix(std::min(pair.size() + 1, rest.size()));
        const std::size_t equals = std::min(pair.find('='), pair.size());
        if (pair.substr(0, equals) == wanted)
            return percent_decode(pair.substr(std::min(equals + 1, pair.size())), true);
    }
    return {};
}

int number_in(const Request& request, const std::string& field, int most) {
    const auto number = number_of<int>(field_of(request, field));
    if (!number || !is_within(*number, most))
        throw std::invalid_argument("Liczba poza zakresem od 0 do " +
                                    count_text(std::uint64_t(most)) + ".");
    return *number;
}

void set_pace(PageRoom& room, const Request& request) {
    // All of it or nothing.
    Options changed = room.service.options;
    for (const auto& [name, title, member] : pace_rows)
        changed.*member = {number_in(request, std::string(name) + "-ms", longest_delay_ms),
                           number_in(request, std::string(name) + "-zapytania", most_polls)};
    room.service.options = changed;
}

void add_fault(PageRoom& room, const Request& request) {
    Fault fault = Fault::from_json(parse_fault_text(field_of(request, "opis")));
    if (!room.is_step(fault.step)) throw std::invalid_argument("unknown step: " + fault.step);
    room.service.faults.add(std::move(fault));
}

void clear_faults(PageRoom& room, const Request&) {
    room.service.faults.clear();
}

/// Something to look at, for whoever has no program yet.
void add_examples(PageRoom& room, const Request&) {
    Purchases purchases;
    purchases.seller = "5265877635";
    purchases.buyer = "7352765225";
    purchases.count = 3;
    add_purchases(room.service, purchases);
}

struct Form {
    std::string_view address;
    /// Throws with the reason when a field is wrong.
    void (*carry_out)(PageRoom& room, const Request& request);
    /// The page that comes next.
    const char* then = "/ustawienia";
};

constexpr Form forms[] = {
    {"/ustawienia/tempo", set_pace},
    {"/ustawienia/usterki", add_fault},
    {"/ustawienia/usterki/usun", clear_faults},
    {"/ustawienia/przyklad", add_examples, "/"},
};

}  // namespace

std::string settings_notice(const Service& service) {
    std::string rows;
    const std::size_t active = active_faults(service.faults.to_json());
    if (active > 0) rows += fact("Czynne usterki", count_text(active));
    for (const auto& [name, title, member] : pace_rows)
        if (slows(service.options.*member)) rows += fact(title, pace_text(service.options.*member));
    if (rows.empty()) return "";
    return "<section class=\"alert\"><p>Ta piaskownica celowo zwleka albo przeszkadza. " +
           link("/ustawienia", "Tempo i usterki") + "</p>" + facts(rows) + "</section>";
}

Answer settings_page(const PageRoom& room) {
    return page("Tempo i usterki",
                pace_section(room.service.options) + fault_section(room.service.faults.to_json()),
                {link("/", "Początek"), "Tempo i usterki"});
}

Answer submit_settings(PageRoom& room, const Request& request) {
    const auto* form = std::find_if(std::begin(forms), std::end(forms),
                                    [&](const Form& it) { return it.address == request.path; });
    if (form == std::end(forms))
        return notice_page(404, "Nie ma takiej strony", "Tego formularza tu nie ma.");
    // Browsers say of every form which site's page sent it.
    if (request.header("Origin") != request.origin)
        return notice_page(403, "Odmowa", "Ten formularz wysłała strona spoza piaskownicy.");
    try {
        form->carry_out(room, request);
    } catch (const std::exception& error) {
        return notice_page(400, "Nie ustawiono", error.what());
    }
    return {303, "", "", {{"Location", form->then}}};
}

}  // namespace tavrix::sandbox
