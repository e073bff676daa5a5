#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "base/secret.h"
#include "ports/database.h"

namespace tavrix::ports {

/// A connection of the library's own to a database server, for one query of the user's. What takes
/// long is only begun, and `done` asks how it goes, so that a window stays alive meanwhile. Every
/// function that is not noexcept throws base::AutomationError with the provider's own words.
class QueryConnection {
  public:
    /// Does not wait for a server that does not answer; what is still under way is ended without
    /// anybody's waiting for it, and the server drops an open transaction.
    virtual ~QueryConnection() = default;

    /// Begins to connect. Nobody asks the user for a password.
    virtual void open(const base::SecretText& connection) = 0;
    /// True when what was begun last is done; throws when it failed.
    virtual bool done() = 0;
    /// Begins to ask the server for short waits for what others have locked and for no more of a
    /// huge value than a window shows.
    virtual void set_up() = 0;
    /// Begins to begin the transaction that the query runs in.
    virtual void begin_transaction() = 0;
    /// Begins to run one query and to fetch at most `row_limit` rows of it.
    virtual void execute(base::TextView sql, std::size_t row_limit) = 0;
    /// The names of the result's columns; they need not be unique, nor filled. None where the
    /// query gave no rows to read.
    virtual std::vector<base::Text> columns() = 0;
    /// The next of the fetched rows, at most `count`; none at the end. Exact numbers come as texts
    /// with a decimal comma.
    virtual std::vector<std::vector<Value>> rows(std::size_t count) = 0;
    /// Asks for the end of what is under way; `done` tells when it ended.
    virtual void cancel() noexcept = 0;
    /// Begins to; not while anything else is under way.
    virtual void roll_back() noexcept = 0;
    virtual void close() noexcept = 0;
};

using MakeQueryConnection = std::function<std::unique_ptr<QueryConnection>()>;

}  // namespace tavrix::ports
