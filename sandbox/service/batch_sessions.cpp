// Batch sessions: opened with a description of a package, which is uploaded in parts to the storage
// and taken apart when the session is closed. Storage looks at no content; sizes are compared when
// the session is closed, everything else shows in its status (package_work.h).
#include <algorithm>

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/text.h"
#include "sandbox/exchange/body.h"
#include "sandbox/service/download_links.h"
#include "sandbox/service/operations.h"
#include "sandbox/service/package_work.h"
#include "sandbox/service/processing.h"
#include "sandbox/service/session_opening.h"
#include "sandbox/store/statuses.h"

namespace tavrix::sandbox {
namespace {

using namespace std::chrono_literals;

// Source: BatchFileInfo of the contract.
constexpr std::int64_t largest_package = 5'000'000'000;
constexpr std::size_t most_parts = 50;
// Source: "Sesja wsadowa", time for the upload: so much for each part, for all of them.
constexpr auto upload_time_per_part = 20min;

/// Enough for packages as tests make them; larger ones are gone on with between requests.
constexpr auto package_time_at_close = 250ms;

std::vector<PackagePart> read_parts(const Json& file) {
    const Json* list = given(file, "fileParts");
    if (list == nullptr || !list->is_array() || list->empty()) throw wrong_format("fileParts");
    if (list->size() > most_parts)
        throw bad_request(ErrorCode::too_many_parts,
                          "Liczba części pliku musi być mniejsza lub równa niż 50.");
    std::vector<PackagePart> parts(list->size());
    for (const Json& entry : *list) {
        if (!entry.is_object()) throw wrong_format("fileParts");
        const std::int64_t ordinal = required_count(entry, "ordinalNumber");
        const PackagePart part{required_count(entry, "fileSize"), required_hash(entry, "fileHash")};
        if (ordinal > std::int64_t(parts.size()) || parts[std::size_t(ordinal - 1)].size != 0)
            throw invalid_input(
                "Numery części pakietu ('ordinalNumber') muszą być kolejnymi liczbami od 1.");
        if (part.size > largest_part)
            throw bad_request(ErrorCode::wrong_part_size,
                              "Rozmiar części " + std::to_string(ordinal) +
                                  " przekroczył dozwolony rozmiar 100MB.");
        parts[std::size_t(ordinal - 1)] = part;
    }
    return parts;
}

/// Older clients send an empty file as one of size 0.
bool is_empty_file(const Json& file) {
    const Json* size = given(file, "fileSize");
    return size != nullptr && whole_number(*size) == 0;
}

Package read_package(const Json& body, Instant now, bool strict) {
    constexpr std::string_view compressions[] = {"Zip", "TarGz"};
    const Json& file = required_object(body, "batchFile");
    Package package;
    if (strict || !is_empty_file(file)) package.size = required_count(file, "fileSize");
    if (package.size > largest_package)
        throw invalid_input("'fileSize' must be less than or equal to '" +
                            std::to_string(largest_package) + "'.");
    package.hash = required_hash(file, "fileHash");
    package.compression = given(file, "compressionType") == nullptr
                              ? "Zip"
                              : required_choice(file, "compressionType", compressions);
    package.parts = read_parts(file);
    package.offline_declared = optional_flag(body, "offlineMode");
    package.upload_until = now + upload_time_per_part * package.parts.size();
    return package;
}

/// Refuses to close a session to which something was not uploaded as declared.
void check_uploads(Service& service, Session& session) {
    const Package& package = *session.package;
    for (int ordinal = 1; ordinal <= int(package.parts.size()); ++ordinal) {
        const auto size = service.packages.part_size(session.reference, ordinal);
        const std::string name = "'" + std::to_string(ordinal) + "'";
        if (!size && service.now() >= package.upload_until) {
            cancel_upload(service, session, service.now());
            throw bad_request(ErrorCode::upload_time_over,
                              "Sesja anulowana, przekroczony czas wysyłki.");
        }
        if (!size)
            throw bad_request(ErrorCode::part_missing,
                              "Nie przesłano zadeklarowanej " + name + " części pliku.");
        if (*size != package.parts[std::size_t(ordinal - 1)].size)
            throw bad_request(ErrorCode::wrong_part_size, "Zadeklarowany rozmiar części " + name +
                                                              " nie zgadza się z rzeczywistym.");
    }
}

/// An answer of the storage, which speaks XML and names its error in a header, too.
Answer storage_error(int status, const std::string& code, const std::string& message) {
    Answer answer =
        Answer::xml("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?><Error><Code>" + code +
                    "</Code><Message>" + message + "</Message></Error>");
    answer.status = status;
    answer.headers.emplace_back("x-ms-error-code", code);
    return answer;
}

}  // namespace

Answer open_batch_session(Service& service, Request& request) {
    const Json body = read_body(request);
    Package package = read_package(body, service.now(), service.options.strict);
    Session session = read_new_session(service, request, body, SessionKind::batch);
    session.package = std::move(package);
    const Session& kept = service.state.add(std::move(session));
    service.save(kept);
    Json uploads = Json::array();
    for (int ordinal = 1; ordinal <= int(kept.package->parts.size()); ++ordinal)
        uploads.push_back({{"ordinalNumber", ordinal},
                           {"method", "PUT"},
                           {"url", part_upload_url(service, request, kept, ordinal)},
                           {"headers", {{"x-ms-blob-type", "BlockBlob"}}}});
    return Answer::json(201,
                        {{"referenceNumber", kept.reference}, {"partUploadRequests", uploads}});
}

Answer close_batch_session(Service& service, Request& request) {
    Session& session = service.session_of(request);
    // Cancelled without ever having been closed.
    if (session.package && session.status.code == 440 && !session.closed)
        throw bad_request(ErrorCode::upload_time_over,
                          "Sesja anulowana, przekroczony czas wysyłki.");
    check_may_close(session, SessionKind::batch);
    check_uploads(service, session);
    close_session(service, session, service.now());
    work_on_packages(service, package_time_at_close);
    return Answer::empty(204);
}

const Session* awaited_part(const Service& service, const Request& request) {
    if (!link_is_good(service, request)) return nullptr;
    const Session* session = look_up(service.state.sessions, upper(request.parameters.at(0)));
    return session != nullptr && session->stage == SessionStage::open ? session : nullptr;
}

Answer upload_part(Service& service, Request& request) {
    if (!request.header("Authorization").empty())
        return storage_error(401, "InvalidAuthenticationInfo",
                             "Authentication information is not given in the correct format.");
    const Session* session = awaited_part(service, request);
    const auto ordinal = number_of<int>(request.parameters.at(1));
    if (session == nullptr || !ordinal) return link_refused();
    if (!request.header("Transfer-Encoding").empty())
        return storage_error(400, "UnsupportedHeader",
                             "One of the HTTP headers specified in the request is not supported.");
    if (request.header("x-ms-blob-type").empty())
        return storage_error(400, "MissingRequiredHeader",
                             "An HTTP header that's mandatory for this request is not specified.");
    if (request.header("x-ms-blob-type") != "BlockBlob")
        return storage_error(400, "InvalidHeaderValue",
                             "The value for one of the HTTP headers is not in the correct format.");
    service.packages.write_part(session->reference, *ordinal, request.body);
    Answer answer = Answer::empty(201);
    answer.headers = {{"ETag", "\"0x" + random_hex(15) + "\""},
                      {"x-ms-request-id", lower_hex(random_bytes(16))},
                      {"x-ms-request-server-encrypted", "true"},
                      {"x-ms-version", "2025-01-05"}};
    return answer;
}

}  // namespace tavrix::sandbox
