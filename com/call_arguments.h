#pragma once

#include <array>
#include <exception>
#include <optional>

#include "com/class_table.h"

namespace tavrix::com {

/// An argument that cannot be used, or an argument list of the wrong shape. Becomes the HRESULT and
/// the argument index of Invoke.
class ArgumentError : public std::exception {
  public:
    explicit ArgumentError(HRESULT code, std::optional<UINT> index = std::nullopt) noexcept
        : code_(code), index_(index) {}
    HRESULT code() const noexcept { return code_; }
    /// The argument's place in the host's own list; nothing when no single argument is to blame.
    std::optional<UINT> index() const noexcept { return index_; }
    const char* what() const noexcept override { return "argument"; }

  private:
    HRESULT code_;
    std::optional<UINT> index_;
};

/// One argument as the host passed it.
struct Incoming {
    /// Null when the argument was left out, also when the host says so with a place holder.
    VARIANT* value = nullptr;
    /// The argument's place in the host's own list.
    UINT index = 0;
    LCID locale = 0;
};

/// The arguments of one call, sorted into the order of the member's list: positional ones come last
/// first, named ones carry their place.
class CallArguments {
  public:
    /// Throws ArgumentError when the list does not fit the member. `let` says that the last place
    /// is the property's new value.
    CallArguments(const Member& member, const DISPPARAMS& parameters, LCID locale, bool let);

    const Incoming& incoming(std::size_t position) const noexcept { return slots_[position]; }

  private:
    void place(std::size_t position, const DISPPARAMS& parameters, UINT index);

    std::array<Incoming, max_arguments + 1> slots_{};
};

}  // namespace tavrix::com
