#include "sandbox/service/session_opening.h"

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/text.h"
#include "sandbox/exchange/body.h"
#include "sandbox/store/statuses.h"

namespace tavrix::sandbox {
namespace {

using namespace std::chrono_literals;

constexpr auto session_lifetime = 12h;

// Source: the tables of supported schemas under OpenOnlineSessionRequest and
// OpenBatchSessionRequest. Of PEF and FA_RR nothing here could judge a document, so their sessions
// are refused.
const FormCode supported_forms[] = {{"FA (2)", "1-0E", "FA"}, {"FA (3)", "1-0E", "FA"}};

FormCode read_form_code(const Json& body) {
    const Json& form = required_object(body, "formCode");
    const FormCode code{required_text(form, "systemCode"), required_text(form, "schemaVersion"),
                        required_text(form, "value")};
    if (!contains(supported_forms, code))
        throw invalid_input("Wskazany kod formularza nie jest wspierany.");
    return code;
}

}  // namespace

Session read_new_session(Service& service, const Request& request, const Json& body,
                         SessionKind kind) {
    Session session;
    session.kind = kind;
    session.form_code = read_form_code(body);
    const Json& encryption = required_object(body, "encryption");
    const std::string encrypted_key = required_bytes(encryption, "encryptedSymmetricKey"),
                      vector = required_bytes(encryption, "initializationVector");
    if (vector.size() != 16) throw invalid_input("Wektor inicjujący musi mieć długość 16 bajtów.");
    session.initialization_vector = base64_encode(vector);
    const std::string key_id = read_key_id(service, symmetric_key_usage, encryption);
    const auto key =
        service.keys.decrypt(symmetric_key_usage, encrypted_key, service.now(), key_id);
    if (key && key->size() == 32) session.symmetric_key = base64_encode(*key);

    const bool online = kind == SessionKind::online;
    const Authentication& authentication = service.authentication_of(request);
    session.reference = service.new_reference(online ? "SO" : "SB");
    session.context = authentication.context;
    session.authentication_reference = authentication.reference;
    session.created = session.updated = service.now();
    session.valid_until = session.created + session_lifetime;
    session.status = make_status(online ? StatusOf::online_session : StatusOf::batch_session, 100);
    return session;
}

void check_may_close(const Session& session, SessionKind kind) {
    if (session.stage != SessionStage::open || session.kind != kind)
        throw bad_request(ErrorCode::session_status, "Status sesji " +
                                                         std::to_string(session.status.code) +
                                                         " uniemożliwia jej zamknięcie.");
}

}  // namespace tavrix::sandbox
