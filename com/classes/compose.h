#pragma once

#include <memory>
#include <utility>

namespace tavrix::com {

/// A public object that lives together with everything it was composed of: `Composed` holds the
/// adapters and, last, the `object` that refers to them.
template <typename Composed, typename... Arguments>
auto compose(Arguments&&... arguments) {
    auto composed = std::make_shared<Composed>(std::forward<Arguments>(arguments)...);
    auto& object = composed->object;
    return std::shared_ptr<std::remove_reference_t<decltype(object)>>(std::move(composed), &object);
}

}  // namespace tavrix::com
