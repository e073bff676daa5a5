// Where the records survive a restart.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "sandbox/store/model.h"

namespace tavrix::sandbox {

/// Keeps what it is given until clear(). Saves between begin() and commit() become durable
/// together. Called under the sandbox's mutex only. Failures throw std::runtime_error with the
/// cause.
class Store {
  public:
    virtual ~Store() = default;
    virtual void begin() = 0;
    virtual void commit() = 0;
    virtual void save(const KsefToken& token) = 0;
    virtual void save(const Authentication& authentication) = 0;
    virtual void save(const Session& session) = 0;
    virtual void save(const Invoice& invoice) = 0;
    virtual void save_setting(std::string_view name, std::string_view value) = 0;
    virtual std::optional<std::string> setting(std::string_view name) = 0;
    /// Forgets all records, not the settings.
    virtual void clear() = 0;
    /// Fills an empty state with everything saved.
    virtual void load(State& state) = 0;
};

/// Remembers nothing: the state in memory is all there is.
class NoStore : public Store {
  public:
    void begin() override {}
    void commit() override {}
    void save(const KsefToken&) override {}
    void save(const Authentication&) override {}
    void save(const Session&) override {}
    void save(const Invoice&) override {}
    void save_setting(std::string_view, std::string_view) override {}
    std::optional<std::string> setting(std::string_view) override { return std::nullopt; }
    void clear() override {}
    void load(State&) override {}
};

/// A database file in write-ahead mode: what was committed survives the end of the process, however
/// it ends. Throws std::runtime_error when the file cannot be opened, is in use by another sandbox,
/// or is not one of ours.
std::unique_ptr<Store> open_sqlite_store(const std::string& file);

}  // namespace tavrix::sandbox
