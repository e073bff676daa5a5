#include "sandbox/service/download_links.h"

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/text.h"
#include "sandbox/service/operations.h"

namespace tavrix::sandbox {
namespace {

constexpr std::chrono::days link_lifetime{3};
constexpr std::string_view upload_root = "/storage/00/";
constexpr std::string_view storage_root = "/storage/01/";

/// Whole seconds, as the storage writes them.
std::string second_text(Instant moment) {
    const std::string text = TimeFormat{0, true}.text(moment);
    return text.substr(0, 19) + "Z";
}

std::string signature(const Service& service, std::string_view path, std::string_view expiry) {
    return base64_encode(
        hmac_sha256(service.secret, std::string(path) + "\n" + std::string(expiry)));
}

/// \param right `r` to read, `w` to write.
std::string signed_url(const Service& service, const Request& request, const std::string& path,
                       Instant valid_until, char right) {
    const std::string expiry = second_text(valid_until);
    return request.origin + path +
           "?sv=2025-01-05&st=" + percent_encode(second_text(service.now())) +
           "&se=" + percent_encode(expiry) + "&sr=b&sp=" + right +
           "&sig=" + percent_encode(signature(service, path, expiry));
}

StorageLink make_link(const Service& service, const Request& request, const std::string& path) {
    const Instant valid_until = service.now() + link_lifetime;
    return {signed_url(service, request, path, valid_until, 'r'), valid_until};
}

}  // namespace

Answer link_refused() {
    Answer answer = Answer::xml(
        "\xEF\xBB\xBF<?xml version=\"1.0\" "
        "encoding=\"utf-8\"?><Error><Code>AuthenticationFailed</Code>"
        "<Message>Server failed to authenticate the request.</Message></Error>");
    answer.status = 403;
    answer.headers.emplace_back("x-ms-error-code", "AuthenticationFailed");
    return answer;
}

bool link_is_good(const Service& service, const Request& request) {
    const std::string expiry = request.parameter("se").value_or("");
    const auto until = parse_instant(expiry);
    return until && service.now() < *until &&
           request.parameter("sig").value_or("") == signature(service, request.path, expiry);
}

std::string part_upload_url(const Service& service, const Request& request, const Session& session,
                            int ordinal) {
    const std::string path = std::string(upload_root) + lower(session.reference) + "/batch-parts/" +
                             std::to_string(ordinal);
    return signed_url(service, request, path, session.package->upload_until, 'w');
}

StorageLink invoice_upo_link(const Service& service, const Request& request,
                             const Invoice& invoice) {
    return make_link(service, request,
                     std::string(storage_root) + invoice.session_reference + "/invoice-upo/upo_" +
                         invoice.ksef_number + ".xml");
}

StorageLink session_upo_link(const Service& service, const Request& request,
                             const Session& session) {
    return make_link(
        service, request,
        std::string(storage_root) + lower(session.reference) + "/session-upo/upo_00.xml");
}

Answer download_invoice_upo(Service& service, Request& request) {
    if (!link_is_good(service, request)) return link_refused();
    // upo_{number}.xml
    const std::string& file = request.parameters.at(1);
    const Invoice* invoice =
        file.size() < 8 ? nullptr : service.state.accepted(file.substr(4, file.size() - 8));
    return invoice == nullptr ? Answer::empty(404) : hashed_xml(invoice->upo);
}

Answer download_session_upo(Service& service, Request& request) {
    if (!link_is_good(service, request)) return link_refused();
    const Session* session = look_up(service.state.sessions, upper(request.parameters.at(0)));
    return session == nullptr ? Answer::empty(404) : hashed_xml(session->upo);
}

Answer hashed_xml(const std::string& xml) {
    Answer answer = Answer::xml(xml);
    answer.headers.emplace_back("x-ms-meta-hash", sha256_base64(xml));
    return answer;
}

}  // namespace tavrix::sandbox
