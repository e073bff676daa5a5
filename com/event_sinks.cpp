#include "com/event_sinks.h"

#include <algorithm>

namespace tavrix::com {
namespace {

using windows::Bstr;
using windows::ComPointer;
using windows::Variant;

// A reference to the value inside `variable`: every kind of value begins at the same place.
VARIANT reference_to(Variant& variable) {
    VARIANT reference{};
    reference.vt = static_cast<VARTYPE>(variable.type() | VT_BYREF);
    reference.byref = &variable.address()->byref;
    return reference;
}

void call_sink(IDispatch& sink, const Member& event, std::span<const EventArgument> arguments) {
    std::array<Variant, max_arguments> values;
    std::array<VARIANT, max_arguments> list;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        values[i] = arguments[i].give();
        // The last argument comes first.
        list[arguments.size() - 1 - i] =
            event.arguments[i].by_reference ? reference_to(values[i]) : values[i].get();
    }
    DISPPARAMS parameters{list.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    EXCEPINFO information{};
    UINT argument_index = 0;
    const HRESULT outcome = sink.Invoke(event.id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                        &parameters, nullptr, &information, &argument_index);
    const Bstr texts[] = {Bstr(information.bstrSource), Bstr(information.bstrDescription),
                          Bstr(information.bstrHelpFile)};
    if (FAILED(outcome)) return;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (event.arguments[i].by_reference && arguments[i].take) {
            arguments[i].take(values[i].get());
        }
    }
}

}  // namespace

DWORD EventSinks::connect(IUnknown& sink) {
    Connection connection;
    if (FAILED(sink.QueryInterface(table_.interface_id, connection.sink.out_void())) &&
        FAILED(sink.QueryInterface(IID_IDispatch, connection.sink.out_void()))) {
        throw ArgumentError(CONNECT_E_CANNOTCONNECT);
    }
    // Counting on, a cookie comes round again only after all others, and 0 is no cookie.
    do {
        ++last_cookie_;
    } while (last_cookie_ == 0 || is_connected(last_cookie_));
    connection.cookie = last_cookie_;
    connections_.push_back(std::move(connection));
    return last_cookie_;
}

bool EventSinks::disconnect(DWORD cookie) noexcept {
    const auto found = std::find_if(connections_.begin(), connections_.end(),
                                    [&](const Connection& each) { return each.cookie == cookie; });
    if (found == connections_.end()) return false;
    // Kept until the list is whole again: the sink may end here, and come back in while it does.
    const Connection removed = std::move(*found);
    connections_.erase(found);
    return true;
}

bool EventSinks::is_connected(DWORD cookie) const noexcept {
    return std::any_of(connections_.begin(), connections_.end(),
                       [&](const Connection& each) { return each.cookie == cookie; });
}

void EventSinks::call_sinks(const Member& event, std::span<const EventArgument> arguments) {
    // A copy, because handlers connect and disconnect.
    const std::vector<Connection> called = connections_;
    for (const Connection& connection : called) {
        if (!is_connected(connection.cookie)) continue;
        guarded([&] { call_sink(*connection.sink.get(), event, arguments); });
    }
}

}  // namespace tavrix::com
