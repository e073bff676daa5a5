#pragma once

#include <memory>

#include "ports/portable/sqlite_database.h"
#include "stand_ins/ado/errors.h"
#include "stand_ins/ado/habits.h"

namespace tavrix::ado {

class Recordset;

/// ADODB.Connection over one SQLite file, named by `Data Source=` in the connection string; the
/// other keys are those of Habits.
class Connection : public std::enable_shared_from_this<Connection> {
  public:
    ~Connection();

    void Open(const std::optional<base::Text>& connection_string,
              const std::optional<base::Text>& user, const std::optional<base::Text>& password,
              const std::optional<std::int32_t>& options);
    void Close();
    void Cancel() { connecting_.cancel(); }
    windows::ComPointer<IDispatch> Execute(const base::Text& sql,
                                           std::optional<std::int32_t>& records_affected,
                                           const std::optional<std::int32_t>& options);
    std::int32_t BeginTrans();
    void CommitTrans();
    void RollbackTrans();
    std::int32_t state() const;
    base::Text connection_string() const { return connection_string_; }
    void set_connection_string(const base::Text& value);
    std::int32_t cursor_location() const { return cursor_location_; }
    void set_cursor_location(std::int32_t value) { cursor_location_ = value; }
    std::int32_t command_timeout() const { return command_timeout_s_; }
    void set_command_timeout(std::int32_t seconds) { command_timeout_s_ = seconds; }
    std::int32_t connection_timeout() const { return connection_timeout_s_; }
    void set_connection_timeout(std::int32_t seconds) { connection_timeout_s_ = seconds; }
    windows::ComPointer<IDispatch> errors() const;

    /// The open database; throws `when_closed` otherwise.
    const std::shared_ptr<ports::SqliteConnection>& database(AdoError when_closed) const;
    const Habits& habits() const noexcept { return habits_; }
    /// Before each write: throws when it is one that the habits want to fail.
    void meet_trouble(base::TextView source);
    /// Throws while rows of Execute wait to be read in a transaction: outside one the provider
    /// would open a second connection for the next statement.
    void require_free() const;
    /// Runs `action` with its failure also listed in Errors, as the database's words. What succeeds
    /// leaves the list as it is.
    template <typename Action>
    auto recorded(Action action) {
        try {
            return action();
        } catch (const base::AutomationError& error) {
            errors_->record(error);
            throw;
        }
    }
    /// As `recorded`; what was asked for asynchronously only lists its failure.
    template <typename Action>
    void recorded_later(bool asynchronously, Action action) {
        try {
            recorded(action);
        } catch (const base::AutomationError&) {
            if (!asynchronously) throw;
        }
    }

  private:
    /// The end of a transaction.
    void end(const char* statement);

    std::shared_ptr<ports::SqliteConnection> database_;
    std::shared_ptr<Errors> errors_ = std::make_shared<Errors>();
    base::Text connection_string_;
    std::int32_t cursor_location_ = cursor_location::server;
    std::int32_t command_timeout_s_ = 30;
    std::int32_t connection_timeout_s_ = 15;
    SilentWork connecting_;
    Habits habits_;
    bool in_transaction_ = false;
    std::weak_ptr<Recordset> executed_;
};

extern const com::ClassTable connection_class;
windows::ComPointer<IDispatch> create_connection();

}  // namespace tavrix::ado
