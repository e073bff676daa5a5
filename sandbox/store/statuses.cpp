#include "sandbox/store/statuses.h"

namespace tavrix::sandbox {
namespace {

struct Row {
    StatusOf what;
    int code;
    const char* description;
    /// What the tables name when there is one thing to say; used when nothing else is said.
    const char* detail = nullptr;
};

constexpr const char* broken_off =
    "Przetwarzanie zostało przerwane z przyczyn wewnętrznych systemu. Spróbuj ponownie";

constexpr Row rows[] = {
    {StatusOf::authentication, 100, "Uwierzytelnianie w toku"},
    {StatusOf::authentication, 200, "Uwierzytelnianie zakończone sukcesem"},
    {StatusOf::authentication, 415, "Uwierzytelnianie zakończone niepowodzeniem",
     "Brak przypisanych uprawnień"},
    {StatusOf::authentication, 425, "Uwierzytelnienie unieważnione",
     "Uwierzytelnienie i powiązane refresh tokeny zostały unieważnione przez użytkownika"},
    {StatusOf::authentication, 450,
     "Uwierzytelnianie zakończone niepowodzeniem z powodu błędnego tokenu", "Nieprawidłowy token"},
    {StatusOf::authentication, 460,
     "Uwierzytelnianie zakończone niepowodzeniem z powodu błędu certyfikatu",
     "Nieważny certyfikat"},
    {StatusOf::authentication, 470, "Uwierzytelnianie zakończone niepowodzeniem",
     "Próba wykorzystania metod autoryzacyjnych osoby zmarłej"},
    {StatusOf::authentication, 480, "Uwierzytelnienie zablokowane",
     "Podejrzenie incydentu bezpieczeństwa. Skontaktuj się z Ministerstwem Finansów przez "
     "formularz zgłoszeniowy."},
    {StatusOf::authentication, 500, "Nieznany błąd"},
    {StatusOf::authentication, 550, "Operacja została anulowana przez system", broken_off},

    {StatusOf::online_session, 100, "Sesja interaktywna otwarta"},
    {StatusOf::online_session, 170, "Sesja interaktywna zamknięta"},
    {StatusOf::online_session, 200, "Sesja interaktywna przetworzona pomyślnie"},
    {StatusOf::online_session, 415, "Błąd odszyfrowania dostarczonego klucza"},
    {StatusOf::online_session, 440, "Sesja anulowana", "Nie przesłano faktur"},
    {StatusOf::online_session, 445, "Błąd weryfikacji, brak poprawnych faktur"},

    {StatusOf::batch_session, 100, "Sesja wsadowa rozpoczęta"},
    {StatusOf::batch_session, 150, "Trwa przetwarzanie"},
    {StatusOf::batch_session, 200, "Sesja wsadowa przetworzona pomyślnie"},
    {StatusOf::batch_session, 405, "Błąd weryfikacji poprawności dostarczonych elementów paczki"},
    {StatusOf::batch_session, 415, "Błąd odszyfrowania dostarczonego klucza"},
    {StatusOf::batch_session, 420, "Przekroczony limit faktur w sesji"},
    {StatusOf::batch_session, 430, "Błąd dekompresji pierwotnego archiwum"},
    {StatusOf::batch_session, 435, "Błąd odszyfrowania zaszyfrowanych części archiwum"},
    {StatusOf::batch_session, 440, "Sesja anulowana", "Nie przesłano faktur"},
    {StatusOf::batch_session, 445, "Błąd weryfikacji, brak poprawnych faktur"},

    {StatusOf::invoice, 100, "Faktura przyjęta do dalszego przetwarzania"},
    {StatusOf::invoice, 150, "Trwa przetwarzanie"},
    {StatusOf::invoice, 200, "Sukces"},
    {StatusOf::invoice, 405, "Przetwarzanie anulowane z powodu błędu sesji"},
    {StatusOf::invoice, 410, "Nieprawidłowy zakres uprawnień"},
    {StatusOf::invoice, 415, "Brak możliwości wysyłania faktury z załącznikiem"},
    {StatusOf::invoice, 430, "Błąd weryfikacji pliku faktury"},
    {StatusOf::invoice, 435, "Błąd odszyfrowania pliku"},
    {StatusOf::invoice, 440, "Duplikat faktury"},
    {StatusOf::invoice, 450, "Błąd weryfikacji semantyki dokumentu faktury"},
    {StatusOf::invoice, 550, "Operacja została anulowana przez system", broken_off},
};

}  // namespace

Status make_status(StatusOf what, int code, std::vector<std::string> details) {
    for (const Row& row : rows) {
        if (row.what != what || row.code != code) continue;
        if (details.empty() && row.detail != nullptr) details = {row.detail};
        return {code, row.description, std::move(details), {}};
    }
    return {code, "Nieznany błąd (" + std::to_string(code) + ")", std::move(details), {}};
}

}  // namespace tavrix::sandbox
