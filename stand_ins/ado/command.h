#pragma once

#include <memory>
#include <vector>

#include "stand_ins/ado/connection.h"

namespace tavrix::ado {

/// One value of a command, in the order of its question marks.
struct Parameter {
    base::Text name;
    std::int32_t type = 0;
    std::int32_t size = 0;
    ports::Value value;
};

class Parameters {
  public:
    void append(const windows::ComPointer<IDispatch>& parameter);
    std::int32_t count() const { return static_cast<std::int32_t>(values_.size()); }
    const std::vector<ports::Value>& values() const noexcept { return values_; }

  private:
    std::vector<ports::Value> values_;
};

/// ADODB.Command for statements that give no rows.
class Command {
  public:
    base::Text text() const { return text_; }
    void set_text(const base::Text& text) { text_ = text; }
    std::int32_t type() const { return type_; }
    void set_type(std::int32_t type) { type_ = type; }
    std::int32_t timeout() const { return timeout_s_; }
    void set_timeout(std::int32_t seconds) { timeout_s_ = seconds; }
    windows::ComPointer<IDispatch> active_connection() const;
    void set_active_connection(const windows::ComPointer<IDispatch>& connection);
    windows::ComPointer<IDispatch> parameters() const;
    windows::ComPointer<IDispatch> create_parameter(const std::optional<base::Text>& name,
                                                    const std::optional<std::int32_t>& type,
                                                    const std::optional<std::int32_t>& direction,
                                                    const std::optional<std::int32_t>& size,
                                                    const std::optional<ports::Value>& value);
    void execute(std::optional<std::int32_t>& records_affected,
                 const std::optional<windows::Variant>& parameters,
                 const std::optional<std::int32_t>& options);

  private:
    std::shared_ptr<Connection> connection_;
    std::shared_ptr<Parameters> parameters_ = std::make_shared<Parameters>();
    base::Text text_;
    std::int32_t type_ = 8;  // adCmdUnknown
    std::int32_t timeout_s_ = 30;
};

extern const com::ClassTable command_class;
windows::ComPointer<IDispatch> create_command();

}  // namespace tavrix::ado
