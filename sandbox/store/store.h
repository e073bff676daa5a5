// Where the records survive a restart.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tavrix::sandbox {

/// Keeps records: a kind, a key within the kind, a value. What is written between begin() and
/// commit() becomes durable together. Called under the sandbox's mutex only. Failures throw
/// std::runtime_error with the cause.
class Store {
  public:
    using Visit = std::function<void(const std::string& key, std::string value)>;

    virtual ~Store() = default;
    /// False when nothing written is ever read, and making records of the state can be spared.
    virtual bool keeps() const { return true; }
    virtual void begin() = 0;
    virtual void commit() = 0;
    /// Adds a record, or replaces its value.
    virtual void write(std::string_view kind, std::string_view key, std::string_view value) = 0;
    virtual std::optional<std::string> read(std::string_view kind, std::string_view key) = 0;
    /// Visits the records of a kind, oldest first. The visitor may read().
    virtual void each(std::string_view kind, const Visit& visit) = 0;
    /// Removes one record, or all of a kind.
    virtual void forget(std::string_view kind, std::string_view key) = 0;
    virtual void forget(std::string_view kind) = 0;
};

/// Remembers nothing: the state in memory is all there is.
class NoStore : public Store {
  public:
    bool keeps() const override { return false; }
    void begin() override {}
    void commit() override {}
    void write(std::string_view, std::string_view, std::string_view) override {}
    std::optional<std::string> read(std::string_view, std::string_view) override { return {}; }
    void each(std::string_view, const Visit&) override {}
    void forget(std::string_view, std::string_view) override {}
    void forget(std::string_view) override {}
};

/// A database file in write-ahead mode: what was committed survives the end of the process, however
/// it ends. Throws std::runtime_error when the file cannot be opened, is in use by another sandbox,
/// or is not one of ours.
std::unique_ptr<Store> open_sqlite_store(const std::string& file);

}  // namespace tavrix::sandbox
