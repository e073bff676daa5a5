// Trouble on demand: what a client must survive, at a chosen step and a chosen time.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/basics/json.h"
#include "sandbox/exchange/exchange.h"
#include "sandbox/exchange/refusals.h"

namespace tavrix::sandbox {

enum class FaultKind {
    refuse,     // the connection closes without an answer, the request is not carried out
    drop,       // the request is carried out, then the connection closes without an answer
    reset,      // part of the answer, then a TCP reset
    cut,        // part of the answer, then an orderly close before Content-Length is reached
    hang,       // no answer until the client gives up or the sandbox stops
    delay,      // the answer comes `delay_ms` late
    drip,       // the answer comes in pieces of `bytes` every `interval_ms`
    status,     // any status with any body
    too_many,   // 429 with Retry-After
    malformed,  // 200 with a body that is not JSON
    truncated,  // the proper body cut in the middle, with a length to match
    html,       // 200 with a page of HTML, as a firewall answers
    empty,      // 200 without a body
    json,       // the proper answer with the value at `path` replaced
    remove,     // the proper answer without the member at `path`
    header,     // the proper answer with the header `name` set to `value`
    escape,     // the JSON of whatever answer with \u escapes for all that is not ASCII
    verdict,    // at a processing step: the outcome is `code`
};

/// The kind's name as commands and JSON write it.
std::string_view to_string(FaultKind kind);

struct Fault {
    std::string step;
    FaultKind kind = FaultKind::status;
    /// Requests of the step let through first, and requests hit after that; a negative count never
    /// ends.
    int skip = 0;
    int count = 1;
    int status = 500;
    std::string body;
    std::string content_type = "application/json";
    int retry_after_s = 30;
    int delay_ms = 1000;
    int bytes = 16;
    int interval_ms = 50;
    std::string path;
    Json value;
    std::string name;
    int code = 0;
    std::string description;
    std::vector<std::string> details;

    int seen = 0;
    int hits = 0;

    /// Throws std::invalid_argument naming the member that is wrong.
    static Fault from_json(const Json& json);
    Json to_json() const;
};

/// Reads `step=auth/challenge kind=status status=500 body='{"a": 1}' skip=0 count=1` into the JSON
/// form. Values with blanks stand in single or double quotes. Throws std::invalid_argument.
Json parse_fault_text(std::string_view text);

class FaultList {
  public:
    void add(Fault fault) { faults_.push_back(std::move(fault)); }
    void clear() { faults_.clear(); }
    bool empty() const { return faults_.empty(); }

    /// Counts a request of the step and returns what hits it: every due fault that edits the
    /// answer, and the first due fault of another kind. The step `*` in a fault matches every step.
    std::vector<Fault> take(std::string_view step);

    Json to_json() const;

  private:
    std::vector<Fault> faults_;
};

/// How the transport is to send an answer.
struct Delivery {
    enum class Mode { whole, drop, reset, cut, hang, drip };
    Mode mode = Mode::whole;
    int delay_ms = 0;
    std::size_t piece_bytes = 16;
    int interval_ms = 0;
};

/// True when the operation itself must not run.
bool prevents_handling(const std::vector<Fault>& faults);
/// Makes the answer to a refusal, in the format that the request asks for.
using RefusalWriter = std::function<Answer(const Refusal&)>;
/// Turns the proper answer (or an empty one, when handling was prevented) into the faulty one.
Delivery apply_faults(const std::vector<Fault>& faults, const RefusalWriter& write, Answer& answer);

}  // namespace tavrix::sandbox
