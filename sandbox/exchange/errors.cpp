#include "sandbox/exchange/errors.h"

#include "sandbox/basics/crypto.h"

namespace tavrix::sandbox {
namespace {

std::string trace_id() {
    return lower_hex(random_bytes(16));
}

Answer problem(int status, const Json& body) {
    Answer answer = Answer::json(status, body);
    answer.content_type = "application/problem+json";
    return answer;
}

/// Error times of the exception list have no offset in the contract's example.
std::string exception_time(Instant now, const TimeFormat& time) {
    std::string text = time.text(now);
    return text.substr(0, text.size() - 6) + "Z";
}

}  // namespace

std::string_view description_of(ErrorCode code) {
    switch (code) {
        case ErrorCode::bad_challenge:
            return "Nieprawidłowe wyzwanie autoryzacyjne.";
        case ErrorCode::invoice_limit_reached:
            return "Przekroczono dozwoloną liczbę faktur w sesji.";
        case ErrorCode::invoice_not_found:
            return "Faktura o podanym identyfikatorze nie istnieje.";
        case ErrorCode::invoice_not_yet_available:
            return "Faktura o podanym numerze KSeF nie jest jeszcze dostępna.";
        case ErrorCode::correction_already_done:
            return "Korekta techniczna niedostępna.";
        case ErrorCode::correction_not_allowed:
            return "Status faktury nie pozwala na korektę techniczną.";
        case ErrorCode::session_not_found:
            return "Brak sesji o wskazanym numerze referencyjnym.";
        case ErrorCode::upo_not_found:
            return "Nie znaleziono UPO dla podanych kryteriów.";
        case ErrorCode::session_status:
            return "Status sesji nie pozwala na wykonanie operacji.";
        case ErrorCode::not_authorised:
            return "Brak autoryzacji.";
        case ErrorCode::not_authenticated:
            return "Brak uwierzytelnienia.";
        case ErrorCode::wrong_size:
            return "Nieprawidłowy rozmiar pliku.";
        case ErrorCode::wrong_hash:
            return "Nieprawidłowy skrót pliku.";
        case ErrorCode::invalid_input:
            return "Błąd walidacji danych wejściowych.";
        case ErrorCode::bad_continuation_token:
            return "Przekazany token kontynuacji ma nieprawidłowy format.";
        case ErrorCode::unknown_key:
            return "Przesłany identyfikator klucza jest nieznany lub wskazuje na wycofany klucz.";
        case ErrorCode::permissions_not_held:
            return "Nie można nadać tokenowi uprawnień których nie posiadasz.";
    }
    return "Nieznany błąd.";
}

BadRequest invalid_input(std::string detail) {
    return BadRequest(ErrorCode::invalid_input, {std::move(detail)});
}

Answer BadRequest::answer(const Request& request, Instant now, const TimeFormat& time) const {
    if (request.wants_problem_details()) {
        Json error = {{"code", int(code_)}, {"description", description_of(code_)}};
        if (!details_.empty()) error["details"] = details_;
        return problem(400, {{"title", "Bad Request"},
                             {"status", 400},
                             {"instance", request.path},
                             {"detail", "Żądanie jest nieprawidłowe."},
                             {"errors", Json::array({error})},
                             {"timestamp", time.text(now)},
                             {"traceId", trace_id()}});
    }
    Json detail = {{"exceptionCode", int(code_)}, {"exceptionDescription", description_of(code_)}};
    if (!details_.empty()) detail["details"] = details_;
    return Answer::json(
        400, {{"exception",
               {{"exceptionDetailList", Json::array({detail})},
                {"serviceCode", "00-" + trace_id() + "-" + trace_id().substr(16) + "-00"},
                {"serviceCtx", "sandbox"},
                {"serviceName", "Undefined"},
                {"timestamp", exception_time(now, time)}}}});
}

Answer Unauthorized::answer(const Request& request, Instant now, const TimeFormat& time) const {
    Answer answer = problem(401, {{"title", "Unauthorized"},
                                  {"status", 401},
                                  {"detail", "Wymagane jest uwierzytelnienie."},
                                  {"instance", request.path},
                                  {"traceId", trace_id()},
                                  {"timestamp", time.text(now)}});
    answer.headers.emplace_back("WWW-Authenticate", "Bearer");
    return answer;
}

Answer Forbidden::answer(const Request& request, Instant now, const TimeFormat& time) const {
    return problem(
        403,
        {{"title", "Forbidden"},
         {"status", 403},
         {"detail", "Brak wymaganych uprawnień do wykonania operacji w bieżącym kontekście."},
         {"instance", request.path},
         {"reasonCode", "missing-permissions"},
         {"security", {{"requiredAnyOfPermissions", required_}, {"presentPermissions", present_}}},
         {"traceId", trace_id()},
         {"timestamp", time.text(now)}});
}

Answer Gone::answer(const Request& request, Instant now, const TimeFormat& time) const {
    return problem(410, {{"title", "Gone"},
                         {"status", 410},
                         {"instance", request.path},
                         {"detail", "Operacja wygasła i nie jest już dostępna."},
                         {"timestamp", time.text(now)},
                         {"traceId", trace_id()}});
}

TooManyRequests::TooManyRequests(int limit, std::string_view window_name, int retry_after_s)
    : Refusal(429), retry_after_s_(retry_after_s) {
    text_ = "Przekroczono limit " + std::to_string(limit) + " żądań na " +
            std::string(window_name) + ". Spróbuj ponownie po " + std::to_string(retry_after_s) +
            (retry_after_s == 1 ? " sekundzie." : " sekundach.");
}

Answer TooManyRequests::answer(const Request& request, Instant now, const TimeFormat& time) const {
    Answer answer = request.wants_problem_details()
                        ? problem(429, {{"title", "Too Many Requests"},
                                        {"status", 429},
                                        {"instance", request.path},
                                        {"detail", text_},
                                        {"timestamp", time.text(now)},
                                        {"traceId", trace_id()}})
                        : Answer::json(429, {{"status",
                                              {{"code", 429},
                                               {"description", "Too Many Requests"},
                                               {"details", Json::array({text_})}}}});
    answer.headers.emplace_back("Retry-After", std::to_string(retry_after_s_));
    return answer;
}

}  // namespace tavrix::sandbox
