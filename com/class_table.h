#pragma once

#include <array>
#include <span>

#include "base/text.h"
#include "windows/automation.h"
#include "windows/variant.h"

namespace tavrix::com {

class CallArguments;

/// The longest argument list of the public classes has nineteen.
inline constexpr std::size_t max_arguments = 20;

struct ArgumentRow {
    base::TextView name;
    VARTYPE type = VT_EMPTY;
    bool by_reference = false;
    bool optional = false;
};

/// Reads the arguments, calls the portable method of the object behind `target` and gives its
/// result. Throws ArgumentError for an argument that will not do, and whatever the method throws.
using Call = windows::Variant (*)(void* target, const CallArguments& arguments);

/// One name of a class: a method, or a property with what reads and what writes it.
struct Member {
    DISPID id = DISPID_UNKNOWN;
    base::TextView name;
    /// One sentence for object browsers and the reference page, in Polish as the hosts' developers
    /// read it.
    base::TextView help;
    std::array<ArgumentRow, max_arguments> arguments{};
    std::size_t argument_count = 0;
    std::size_t required_count = 0;
    VARTYPE result = VT_EMPTY;
    /// The class of an object that is the result, as far as it is always the same one of ours.
    base::TextView result_class;
    Call method = nullptr;
    Call get = nullptr;
    /// Takes the new value behind the arguments.
    Call let = nullptr;
    VARTYPE let_type = VT_EMPTY;
    /// Callable, but its work is still to be done: it answers with its failure value.
    bool pending = false;
};

/// What a class tells its hosts of its own accord: the members are called on the sinks that hosts
/// connect, through IDispatch. Object browsers know the interface as `__Class`.
struct EventTable {
    GUID interface_id;
    base::TextView help;
    /// Named and described like methods, with nothing behind them to call.
    std::span<const Member> members;
};

/// A class as hosts see it. GUIDs and DISPIDs are published and never change; members are only
/// added.
struct ClassTable {
    GUID class_id;
    GUID interface_id;
    base::TextView name;
    base::TextView help;
    std::span<const Member> members;
    /// Null for a class that raises no events.
    const EventTable* events = nullptr;
};

/// The name of the interface behind a class, and of its events' interface.
base::Text interface_name(const ClassTable& table);
base::Text event_interface_name(const ClassTable& table);

/// The member of that name, whatever its letter case; null when there is none.
const Member* find_member(const ClassTable& table, base::TextView name) noexcept;
const Member* find_member(const ClassTable& table, DISPID id) noexcept;
/// The position of the argument of that name; DISPID_UNKNOWN when the member has none such.
DISPID find_argument(const Member& member, base::TextView name) noexcept;

}  // namespace tavrix::com
