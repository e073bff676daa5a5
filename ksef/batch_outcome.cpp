#include "ksef/batch_outcome.h"

#include <algorithm>

#include "base/error.h"
#include "ksef/json.h"

namespace tavrix::ksef {
namespace {

using namespace std::chrono_literals;

// The service takes 120 such questions a minute from everybody of a company together.
constexpr std::chrono::seconds outcome_poll_pause = 5s;

int number_at(const Json& answer, const std::string& path) {
    const Json& value = json_at(answer, path);
    return value.is_number_integer() ? value.get<int>() : 0;
}

BatchOutcome read_outcome(std::string_view body) {
    const Json answer = parse_json(body);
    return {number_at(answer, "status.code"), utf8_at(answer, "status.description"),
            number_at(answer, "invoiceCount"), number_at(answer, "successfulInvoiceCount"),
            number_at(answer, "failedInvoiceCount")};
}

}  // namespace

BatchOutcome wait_for_batch(Client& client, ports::Clock& clock, const std::string& session,
                            std::chrono::seconds longest, const std::function<void()>& log_in) {
    BatchOutcome outcome;
    for (auto left = longest;;) {
        client.renew_time();
        const ports::HttpReply reply = client.get("/api/v2/sessions/" + path_segment(session));
        if (answered(reply, 401)) log_in();
        if (answered(reply, 200)) outcome = read_outcome(reply.body.view());
        if (outcome.is_known() || left <= 0s) return outcome;
        const auto pause = std::min(left, outcome_poll_pause);
        clock.sleep(pause);
        left -= pause;
    }
}

}  // namespace tavrix::ksef
