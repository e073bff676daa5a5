#pragma once

#include <span>

#include "base/text.h"

namespace tavrix::ports {

/// One step of a procedure, as the trace log names it.
struct TraceMark {
    base::TextView form;
    base::TextView procedure;
    base::TextView step;

    /// "form:procedure:step"
    base::Text entry() const {
        return base::Text(form).append(u":").append(procedure).append(u":").append(step);
    }
};

/// The table of one procedure's marks. A mark that the table lacks does not compile.
class TraceProcedure {
  public:
    consteval TraceProcedure(base::TextView form, base::TextView name,
                             std::span<const base::TextView> steps)
        : form_(form), name_(name), steps_(steps) {}

    consteval TraceMark operator[](base::TextView step) const {
        for (const base::TextView known : steps_) {
            if (known == step) return {form_, name_, known};
        }
        throw "the procedure has no such mark";
    }

  private:
    base::TextView form_;
    base::TextView name_;
    std::span<const base::TextView> steps_;
};

/// The trace log. Its switch is a file that stands somewhere or does not; whoever wants to find out
/// why mail does not arrive creates it. Nothing throws: a trace must not disturb what it traces.
class Trace {
  public:
    virtual ~Trace() = default;
    /// Turns the trace on when the switch is there. Nothing turns it off again before the library
    /// is unloaded.
    virtual void look_for_switch() noexcept = 0;
    /// Adds one line; does nothing while the trace is off.
    virtual void write(base::TextView entry) noexcept = 0;
    /// The mark's line, followed by ":" and `details` when there are any.
    void mark(const TraceMark& mark, base::TextView details = {}) noexcept {
        try {
            base::Text entry = mark.entry();
            if (!details.empty()) entry.append(u":").append(details);
            write(entry);
        } catch (...) {
            // Out of memory: the line is lost and nothing else.
        }
    }
};

/// For whoever has nobody to tell.
class NoTrace final : public Trace {
  public:
    void look_for_switch() noexcept override {}
    void write(base::TextView /*entry*/) noexcept override {}
};

}  // namespace tavrix::ports
