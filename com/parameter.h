#pragma once

#include <optional>

#include "com/codec.h"

namespace tavrix::com {

/// Stores a by-reference argument's new value where the host keeps it, in the form that the host
/// sent: a typed variable keeps its type, a variant takes the new one, a plain value has nowhere to
/// store.
void store(VARIANT& destination, windows::Variant value, LCID locale);

namespace detail {

template <typename T>
T read(const Incoming& incoming) {
    try {
        return Codec<T>::read(windows::look_through(*incoming.value), incoming.locale);
    } catch (const ArgumentError& error) {
        throw ArgumentError(error.code(), incoming.index);
    }
}

template <typename T>
void write_back(const Incoming& incoming, const T& value) {
    try {
        store(*incoming.value, Codec<T>::write(value), incoming.locale);
    } catch (const ArgumentError& error) {
        throw ArgumentError(error.code(), incoming.index);
    }
}

}  // namespace detail

/// One argument of a portable method, from the host's value to the method's parameter and, for a
/// reference that the method may change, back again.
template <typename T>
class Parameter {
  public:
    static constexpr VARTYPE type = Codec<T>::type;
    static constexpr bool writes = false;
    static constexpr bool optional = false;

    explicit Parameter(const Incoming& incoming) : value_(detail::read<T>(incoming)) {}
    const T& get() const noexcept { return value_; }
    void write_back() const noexcept {}

  private:
    T value_;
};

template <typename T>
class Parameter<const T&> : public Parameter<T> {
  public:
    using Parameter<T>::Parameter;
};

template <typename T>
class Parameter<T&> {
  public:
    static constexpr VARTYPE type = Codec<T>::type;
    static constexpr bool writes = true;
    static constexpr bool optional = false;

    explicit Parameter(const Incoming& incoming)
        : incoming_(incoming), value_(detail::read<T>(incoming)), before_(value_) {}
    T& get() noexcept { return value_; }
    /// An argument that the method left alone is left alone.
    void write_back() const {
        if (!(value_ == before_)) detail::write_back(incoming_, value_);
    }

  private:
    Incoming incoming_;
    T value_;
    T before_;
};

/// The same for a secret, of which nothing makes copies unasked.
template <>
class Parameter<base::SecretText&> {
  public:
    static constexpr VARTYPE type = Codec<base::SecretText>::type;
    static constexpr bool writes = true;
    static constexpr bool optional = false;

    explicit Parameter(const Incoming& incoming)
        : incoming_(incoming),
          value_(detail::read<base::SecretText>(incoming)),
          before_(value_.copy()) {}
    base::SecretText& get() noexcept { return value_; }
    void write_back() const {
        if (value_.view() != before_.view()) detail::write_back(incoming_, value_);
    }

  private:
    Incoming incoming_;
    base::SecretText value_;
    base::SecretText before_;
};

/// An argument that may be left out.
template <typename T>
class Parameter<std::optional<T>> {
  public:
    static constexpr VARTYPE type = Codec<T>::type;
    static constexpr bool writes = false;
    static constexpr bool optional = true;

    explicit Parameter(const Incoming& incoming) {
        if (incoming.value != nullptr) value_ = detail::read<T>(incoming);
    }
    const std::optional<T>& get() const noexcept { return value_; }
    void write_back() const noexcept {}

  private:
    std::optional<T> value_;
};

template <typename T>
class Parameter<const std::optional<T>&> : public Parameter<std::optional<T>> {
  public:
    using Parameter<std::optional<T>>::Parameter;
};

/// An output that the host may leave out. What the host's variable held is not read.
template <typename T>
class Parameter<std::optional<T>&> {
  public:
    static constexpr VARTYPE type = Codec<T>::type;
    static constexpr bool writes = true;
    static constexpr bool optional = true;

    explicit Parameter(const Incoming& incoming) : incoming_(incoming) {}
    std::optional<T>& get() noexcept { return value_; }
    void write_back() const {
        if (value_ && incoming_.value != nullptr) detail::write_back(incoming_, *value_);
    }

  private:
    Incoming incoming_;
    std::optional<T> value_;
};

/// An object of the host as the port that the method takes; `Adapter` makes the port of the object,
/// which may be Nothing. The method only uses it: there is nothing to write back.
template <typename Port, typename Adapter>
class ObjectParameter {
  public:
    static constexpr VARTYPE type = VT_DISPATCH;
    static constexpr bool writes = false;
    static constexpr bool optional = false;

    explicit ObjectParameter(const Incoming& incoming)
        : adapter_(detail::read<windows::ComPointer<IDispatch>>(incoming)) {}
    Port& get() noexcept { return adapter_; }
    void write_back() const noexcept {}

  private:
    Adapter adapter_;
};

}  // namespace tavrix::com
