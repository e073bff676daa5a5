#pragma once

#include <functional>
#include <span>
#include <type_traits>
#include <vector>

#include "com/codec.h"

namespace tavrix::com {

/// One argument of an event on its way to a sink and back.
struct EventArgument {
    std::function<windows::Variant()> give;
    /// Takes over what a handler wrote; empty for an argument that handlers only read.
    std::function<void(const VARIANT&)> take;
};

/// The sinks that hosts have connected to one object, and the way to them. Belongs to the object's
/// apartment, and is shared by what hosts connect to and what raises the events.
class EventSinks {
  public:
    struct Connection {
        DWORD cookie = 0;
        windows::ComPointer<IDispatch> sink;
    };

    /// `table` lives as long as the DLL.
    explicit EventSinks(const EventTable& table) noexcept : table_(table) {}

    const EventTable& table() const noexcept { return table_; }

    /// Takes a sink that answers to the events' own interface or to IDispatch. Gives its cookie,
    /// never 0; throws ArgumentError (CONNECT_E_CANNOTCONNECT) for any other object.
    DWORD connect(IUnknown& sink);
    /// False when no sink is connected under the cookie.
    bool disconnect(DWORD cookie) noexcept;
    const std::vector<Connection>& connections() const noexcept { return connections_; }

    /// Calls every sink, in the order in which they were connected. What a sink does or fails at
    /// stays its own affair; one that was disconnected meanwhile is not called any more. Arguments
    /// that the event's row declares by reference can be written by each handler and are then seen
    /// by the next; what a failed handler wrote is not taken over.
    template <typename... Arguments>
    void fire(const Member& event, Arguments&... arguments) noexcept {
        if (connections_.empty()) return;
        guarded([&] {
            const std::array<EventArgument, sizeof...(Arguments)> list{argument(arguments)...};
            call_sinks(event, list);
        });
    }

  private:
    template <typename T>
    static EventArgument argument(T& value) {
        using Codec = com::Codec<std::remove_const_t<T>>;
        EventArgument argument{[&value] { return Codec::write(value); }, {}};
        if constexpr (!std::is_const_v<T>) {
            argument.take = [&value](const VARIANT& given) {
                value = Codec::read(given, LOCALE_USER_DEFAULT);
            };
        }
        return argument;
    }
    // A template, because to wrap the action in a std::function may fail outside of the guard.
    template <typename Action>
    static void guarded(const Action& action) noexcept {
        try {
            action();
        } catch (...) {
            // An event that cannot be told must not end the work it tells of.
        }
    }
    void call_sinks(const Member& event, std::span<const EventArgument> arguments);
    bool is_connected(DWORD cookie) const noexcept;

    const EventTable& table_;
    std::vector<Connection> connections_;
    DWORD last_cookie_ = 0;
};

}  // namespace tavrix::com
