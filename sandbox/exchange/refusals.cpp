#include "sandbox/exchange/refusals.h"

#include <algorithm>

#include "sandbox/basics/crypto.h"

namespace tavrix::sandbox {
namespace {

constexpr std::pair<ErrorCode, std::string_view> descriptions[] = {
    {ErrorCode::bad_challenge, "Nieprawidłowe wyzwanie autoryzacyjne."},
    {ErrorCode::invoice_limit_reached, "Przekroczono dozwoloną liczbę faktur w sesji."},
    {ErrorCode::wrong_part_size, "Nieprawidłowy rozmiar części pakietu."},
    {ErrorCode::too_many_parts, "Przekroczono dozwoloną liczbę części pakietu."},
    {ErrorCode::invoice_not_found, "Faktura o podanym identyfikatorze nie istnieje."},
    {ErrorCode::invoice_not_yet_available,
     "Faktura o podanym numerze KSeF nie jest jeszcze dostępna."},
    {ErrorCode::correction_already_done, "Korekta techniczna niedostępna."},
    {ErrorCode::correction_not_allowed, "Status faktury nie pozwala na korektę techniczną."},
    {ErrorCode::session_not_found, "Brak sesji o wskazanym numerze referencyjnym."},
    {ErrorCode::upo_not_found, "Nie znaleziono UPO dla podanych kryteriów."},
    {ErrorCode::session_status, "Status sesji nie pozwala na wykonanie operacji."},
    {ErrorCode::outside_data, "Zakres filtrowania wykracza poza dostępny zakres danych."},
    {ErrorCode::part_missing, "Pakiet nie może być pusty."},
    {ErrorCode::upload_time_over,
     "Czas oczekiwania na requesty upload lub finish został przekroczony."},
    {ErrorCode::not_authorised, "Brak autoryzacji."},
    {ErrorCode::not_authenticated, "Brak uwierzytelnienia."},
    {ErrorCode::wrong_size, "Nieprawidłowy rozmiar pliku."},
    {ErrorCode::wrong_hash, "Nieprawidłowy skrót pliku."},
    {ErrorCode::invalid_input, "Błąd walidacji danych wejściowych."},
    {ErrorCode::bad_continuation_token, "Przekazany token kontynuacji ma nieprawidłowy format."},
    {ErrorCode::unknown_key,
     "Przesłany identyfikator klucza jest nieznany lub wskazuje na wycofany klucz."},
    {ErrorCode::permissions_not_held, "Nie można nadać tokenowi uprawnień których nie posiadasz."},
};

std::string_view description_of(ErrorCode code) {
    return std::find_if(std::begin(descriptions), std::end(descriptions),
                        [code](const auto& row) { return row.first == code; })
        ->second;
}

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
    const std::string text = time.text(now);
    return text.substr(0, text.size() - 6) + "Z";
}

Refusal forbidden_because(const char* reason, const char* detail, const Json& security) {
    return {[=](const Request& request, Instant now, const TimeFormat& time) {
        return problem(403, {{"title", "Forbidden"},
                             {"status", 403},
                             {"detail", detail},
                             {"instance", request.path},
                             {"reasonCode", reason},
                             {"security", security},
                             {"traceId", trace_id()},
                             {"timestamp", time.text(now)}});
    }};
}

}  // namespace

Refusal bad_request(ErrorCode code, std::string detail) {
    return {[=](const Request& request, Instant now, const TimeFormat& time) {
        const bool as_problem = request.wants_problem_details();
        Json error = {{as_problem ? "code" : "exceptionCode", int(code)},
                      {as_problem ? "description" : "exceptionDescription", description_of(code)}};
        if (!detail.empty()) error["details"] = Json::array({detail});
        if (as_problem)
            return problem(400, {{"title", "Bad Request"},
                                 {"status", 400},
                                 {"instance", request.path},
                                 {"detail", "Żądanie jest nieprawidłowe."},
                                 {"errors", Json::array({error})},
                                 {"timestamp", time.text(now)},
                                 {"traceId", trace_id()}});
        return Answer::json(
            400, {{"exception",
                   {{"exceptionDetailList", Json::array({error})},
                    {"serviceCode", "00-" + trace_id() + "-" + trace_id().substr(16) + "-00"},
                    {"serviceCtx", "sandbox"},
                    {"serviceName", "Undefined"},
                    {"timestamp", exception_time(now, time)}}}});
    }};
}

Refusal invalid_input(std::string detail) {
    return bad_request(ErrorCode::invalid_input, std::move(detail));
}

Refusal unauthorized() {
    return {[](const Request& request, Instant now, const TimeFormat& time) {
        Answer answer = problem(401, {{"title", "Unauthorized"},
                                      {"status", 401},
                                      {"detail", "Wymagane jest uwierzytelnienie."},
                                      {"instance", request.path},
                                      {"traceId", trace_id()},
                                      {"timestamp", time.text(now)}});
        answer.headers.emplace_back("WWW-Authenticate", "Bearer");
        return answer;
    }};
}

Refusal forbidden(std::vector<std::string> required, std::vector<std::string> present) {
    return forbidden_because(
        "missing-permissions",
        "Brak wymaganych uprawnień do wykonania operacji w bieżącym kontekście.",
        {{"requiredAnyOfPermissions", required}, {"presentPermissions", present}});
}

Refusal address_not_allowed(std::string client_ip) {
    return forbidden_because(
        "ip-not-allowed",
        "Żądanie pochodzi z adresu IP innego niż wskazany podczas uwierzytelnienia.",
        {{"clientIp", client_ip}});
}

Answer too_many_requests_answer(int limit, std::string_view window_name, int retry_after_s) {
    const std::string wait = std::to_string(retry_after_s);
    const std::string text = "Przekroczono limit " + std::to_string(limit) + " żądań na " +
                             std::string(window_name) + ". Spróbuj ponownie po " + wait +
                             " sekundach.";
    Answer answer = Answer::json(429, {{"status",
                                        {{"code", 429},
                                         {"description", "Too Many Requests"},
                                         {"details", Json::array({text})}}}});
    answer.headers.emplace_back("Retry-After", wait);
    return answer;
}

Refusal too_many_requests(int limit, std::string_view window_name, int retry_after_s) {
    Answer plain = too_many_requests_answer(limit, window_name, retry_after_s);
    return {[plain](const Request& request, Instant now, const TimeFormat& time) {
        if (!request.wants_problem_details()) return plain;
        Answer answer = problem(429, {{"title", "Too Many Requests"},
                                      {"status", 429},
                                      {"instance", request.path},
                                      {"detail", parse_json(plain.body)["status"]["details"][0]},
                                      {"timestamp", time.text(now)},
                                      {"traceId", trace_id()}});
        answer.headers = plain.headers;
        return answer;
    }};
}

}  // namespace tavrix::sandbox
