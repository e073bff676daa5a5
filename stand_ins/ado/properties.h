#pragma once

#include <functional>
#include <vector>

#include "com/class_table.h"
#include "ports/database.h"

namespace tavrix::ado {

/// A property that a provider or a service adds to ADO's own: by name, with a value of any type.
class Property {
  public:
    using Get = std::function<ports::Value()>;
    using Let = std::function<void(const ports::Value&)>;

    /// Without `let` it is only read.
    Property(base::Text name, Get get, Let let = {})
        : name_(std::move(name)), get_(std::move(get)), let_(std::move(let)) {}
    base::Text name() const { return name_; }
    ports::Value value() const { return get_(); }
    void set_value(const ports::Value& value);

  private:
    base::Text name_;
    Get get_;
    Let let_;
};

class Properties {
  public:
    explicit Properties(std::vector<Property> properties) : properties_(std::move(properties)) {}
    std::int32_t count() const { return static_cast<std::int32_t>(properties_.size()); }
    windows::ComPointer<IDispatch> item(const ports::Value& index) const;

  private:
    std::vector<Property> properties_;
};

extern const com::ClassTable property_class;
extern const com::ClassTable properties_class;

}  // namespace tavrix::ado
