#include "mail/pop3/refusal.h"

namespace tavrix::mail {
namespace {

struct Explanation {
    base::TextView words;
    base::TextView meaning;
};

// The first that fits: a server that says why marks it with [AUTH] as well.
constexpr Explanation refusals[] = {
    {u"[IN-USE]", u"Skrzynka jest zajęta przez inne połączenie. Spróbuj za chwilę."},
    {u"[LOGIN-DELAY]", u"Serwer wymaga przerwy między połączeniami. Spróbuj później."},
    {u"[SYS/TEMP]", u"Serwer ma chwilowe kłopoty. Spróbuj później."},
    {u"[SYS/PERM]", u"Serwer odmawia stale: trzeba zapytać jego administratora."},
    {u"plaintext auth", u"Serwer nie przyjmuje haseł bez szyfrowania: włącz SSL."},
    {u"oauth", u"To konto wymaga OAuth lub hasła aplikacji."},
    {u"web login", u"To konto wymaga OAuth lub hasła aplikacji."},
    {u"application-specific", u"To konto wymaga OAuth lub hasła aplikacji."},
    {u"app password", u"To konto wymaga OAuth lub hasła aplikacji."},
    {u"basic authentication", u"To konto wymaga OAuth lub hasła aplikacji."},
    {u"[AUTH]", u"Serwer odrzucił nazwę użytkownika lub hasło."},
};

}  // namespace

base::Text explained_refusal(base::TextView reply) {
    for (const Explanation& known : refusals) {
        if (base::find_case_blind(reply, known.words) == base::TextView::npos) continue;
        return base::Text(known.meaning) + u" " + base::Text(reply);
    }
    return base::Text(reply);
}

base::Text explained_failure(base::TextView words) {
    base::Text text(words);
    if (base::find_case_blind(words, u"certificate") != base::TextView::npos) {
        text +=
            u" Podaj nazwę serwera, którą ma jego certyfikat, albo plik jego urzędu w ustawieniu "
            u"http.private_ca_file.";
    }
    return text;
}

}  // namespace tavrix::mail
