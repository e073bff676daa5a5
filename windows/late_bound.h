#pragma once

#include <array>
#include <span>

#include "windows/variant.h"

namespace tavrix::windows {

/// An automation object whose members are called by name. Every function throws
/// base::AutomationError with what the object reported; a call on Nothing is the hosts' run-time
/// error 91.
class LateBound {
  public:
    LateBound() = default;
    explicit LateBound(ComPointer<IDispatch> object) : object_(std::move(object)) {}
    /// A new object of the class registered as `prog_id`.
    static LateBound create(const char16_t* prog_id);

    IDispatch* dispatch() const noexcept { return object_.get(); }
    explicit operator bool() const noexcept { return static_cast<bool>(object_); }

    template <typename... Arguments>
    Variant get(const char16_t* name, Arguments&&... arguments) const {
        return pass(name, DISPATCH_PROPERTYGET, std::forward<Arguments>(arguments)...);
    }
    template <typename... Arguments>
    Variant call(const char16_t* name, Arguments&&... arguments) const {
        return pass(name, DISPATCH_METHOD, std::forward<Arguments>(arguments)...);
    }
    /// The last argument is the property's new value.
    template <typename... Arguments>
    void put(const char16_t* name, Arguments&&... arguments) const {
        pass(name, DISPATCH_PROPERTYPUT, std::forward<Arguments>(arguments)...);
    }
    /// As `Set` does it in a script: the property becomes the object itself, where `put` may make
    /// do with the object's default value.
    void put_reference(const char16_t* name, const LateBound& object) const {
        pass(name, DISPATCH_PROPERTYPUTREF, object.object_);
    }
    /// The number of a member, for whoever reads it often.
    DISPID id_of(const char16_t* name) const;
    /// A member of that number as Visual Basic reads one: a property or a method, whichever the
    /// object made of it. `name` is for what fails.
    Variant read(DISPID id, const char16_t* name, std::span<Variant> arguments) const {
        return invoke(id, name, DISPATCH_METHOD | DISPATCH_PROPERTYGET, arguments);
    }
    /// A property that is an object.
    template <typename... Arguments>
    LateBound object(const char16_t* name, Arguments&&... arguments) const {
        return LateBound(object_of(get(name, std::forward<Arguments>(arguments)...).get()));
    }

  private:
    template <typename... Arguments>
    Variant pass(const char16_t* name, WORD flags, Arguments&&... arguments) const {
        std::array<Variant, sizeof...(Arguments)> values{
            Variant(std::forward<Arguments>(arguments))...};
        return invoke(id_of(name), name, flags, values);
    }
    Variant invoke(DISPID id, const char16_t* name, WORD flags, std::span<Variant> arguments) const;

    ComPointer<IDispatch> object_;
};

}  // namespace tavrix::windows
