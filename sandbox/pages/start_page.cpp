#include "sandbox/pages/start_page.h"

#include "sandbox/pages/html.h"

namespace tavrix::sandbox {
namespace {

std::string step(const std::string& title, const std::string& html) {
    return "<li><h3>" + title + "</h3>" + html + "</li>";
}

std::string sentence(const std::string& html) {
    return "<p>" + html + "</p>";
}

}  // namespace

std::string start_section(const Options& options, const std::string& origin) {
    const std::string token =
        options.tokens.empty()
            ? sentence(
                  "Przyjmowany jest każdy token tej postaci; NIP ma dziesięć cyfr, cyfra "
                  "kontrolna nie jest sprawdzana:") +
                  excerpt("dowolny-napis|nip-5265877635|dowolny-napis")
            : sentence(
                  "Ta piaskownica przyjmuje tylko tokeny, które podano przy jej "
                  "uruchomieniu, i utworzone w niej.");
    return section(
        "Jak zacząć",
        "<ol class=\"steps\">" +
            step("Adres KSeF w swoim programie",
                 excerpt(origin) +
                     sentence("Operacje są pod <code>/v2</code> i pod <code>/api/v2</code>.")) +
            step("Token", token) +
            step("Próba jednym poleceniem",
                 excerpt("curl -s -X POST " + origin + "/v2/auth/challenge") +
                     sentence("W PowerShell:") +
                     excerpt("Invoke-RestMethod -Method Post " + origin + "/v2/auth/challenge") +
                     sentence("To żądanie pojawi się wśród " + link("/zadania", "żądań") + ".")) +
            step("Biblioteka Tavrix: ustawienia w <code>Tavrix.json</code>",
                 excerpt("{\"ksef\": {\"test\": \"" + origin + "\", \"path_root\": \"/v2\"}}") +
                     sentence("W programie środowisko <code>test</code>.")) +
            step("Faktury do obejrzenia",
                 sentence("Trzy zmyślone faktury zakupu, żeby było co oglądać i pobierać. Można "
                          "je też dodać przez <code>POST /sandbox/purchases</code>.") +
                     "<form method=\"post\" action=\"/ustawienia/przyklad\">"
                     "<button type=\"submit\">Dodaj przykładowe faktury</button></form>") +
            "</ol>");
}

}  // namespace tavrix::sandbox
