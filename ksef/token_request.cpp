#include "ksef/token_request.h"

namespace tavrix::ksef {
namespace {

using namespace std::chrono_literals;

// The service takes 30 such questions a minute.
constexpr auto token_poll_pause = 2000ms;
constexpr int most_token_polls = 30;

}  // namespace

IssuedToken request_token(Client& client, const TokenRequest& request) {
    Body body;
    body["permissions"] = request.permissions;
    body["description"] = base::to_utf8(request.description);
    ports::HttpReply reply = client.post_once("/api/v2/tokens", body);
    if (!answered(reply, 202)) {
        return {false, base::SecretText(failure_text(reply, u"/tokens:STATUS:")), {}};
    }
    SecretAnswer answer = parse_secret_json(reply.body, {"token"});
    return {true, base::from_secret_utf8(answer.secrets[0].view()),
            utf8_at(answer.rest, "referenceNumber")};
}

std::string wait_until_active(Client& client, ports::Clock& clock, const std::string& reference) {
    std::string status;
    for (int round = 0; round < most_token_polls; ++round) {
        if (round > 0) clock.sleep(token_poll_pause);
        const ports::HttpReply reply = client.get("/api/v2/tokens/" + path_segment(reference));
        if (!answered(reply, 200)) continue;
        status = utf8_at(parse_json(reply.body.view()), "status");
        if (!status.empty() && status != "Pending") break;
    }
    return status;
}

}  // namespace tavrix::ksef
