#pragma once

#include <functional>
#include <map>
#include <memory>

#include "com/class_table.h"
#include "windows/com_pointer.h"

namespace tavrix::cdo {

/// Everything that a message was told, a line for each thing, in its order: "To=a@b.pl",
/// "smtpserverport=I2 25", "Send".
using Record = std::shared_ptr<base::Text>;

void note(const Record& record, base::TextView what, base::TextView value);

/// The fields of a configuration, by their full names. What is set counts after Update.
class Fields : public std::enable_shared_from_this<Fields> {
  public:
    explicit Fields(Record record) : record_(std::move(record)) {}
    windows::ComPointer<IDispatch> item(const base::Text& name);
    void Update();

    void set(const base::Text& name, const windows::Variant& value);
    /// As text; empty for a field that was never set or updated.
    base::Text text(const base::Text& name) const;

  private:
    Record record_;
    std::map<base::Text, base::Text> set_;
    std::map<base::Text, base::Text> updated_;
};

class Field {
  public:
    Field(std::shared_ptr<Fields> fields, base::Text name)
        : fields_(std::move(fields)), name_(std::move(name)) {}
    base::Text value() const { return fields_->text(name_); }
    void set_value(const windows::Variant& value) { fields_->set(name_, value); }

  private:
    std::shared_ptr<Fields> fields_;
    base::Text name_;
};

class Configuration {
  public:
    explicit Configuration(std::shared_ptr<Fields> fields) : fields_(std::move(fields)) {}
    windows::ComPointer<IDispatch> fields() const;

  private:
    std::shared_ptr<Fields> fields_;
};

extern const com::ClassTable fields_class;
extern const com::ClassTable field_class;
extern const com::ClassTable configuration_class;

}  // namespace tavrix::cdo
