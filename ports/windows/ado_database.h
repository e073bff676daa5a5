#pragma once

#include "ports/database.h"
#include "windows/late_bound.h"

namespace tavrix::windows {

/// The host's open ADO connection, called late-bound, so that any version of it and any provider
/// behind it will do. Nothing is accepted and fails, with run-time error 91, when it is first used.
/// In sight because the public classes' arguments become one.
class AdoDatabase final : public ports::Database {
  public:
    explicit AdoDatabase(ComPointer<IDispatch> connection) : connection_(std::move(connection)) {}
    std::unique_ptr<ports::Recordset> open(base::TextView sql) override;
    void execute(base::TextView sql) override;
    base::Text name() override;

  private:
    LateBound connection_;
};

}  // namespace tavrix::windows
