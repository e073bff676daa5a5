#include "ports/windows/host_object.h"

#include "windows/variant_value.h"

namespace tavrix::windows {

base::Value HostObject::get(const char16_t* name, std::span<const std::int32_t> arguments) {
    const DISPID id = id_of(name);
    std::vector<Variant> values;
    for (const std::int32_t argument : arguments) values.emplace_back(argument);
    return value_of(object_.read(id, name, values).get());
}

DISPID HostObject::id_of(const char16_t* name) {
    for (const auto& [known_name, id] : known_) {
        if (known_name == name) return id;
    }
    return known_.emplace_back(name, object_.id_of(name)).second;
}

}  // namespace tavrix::windows
