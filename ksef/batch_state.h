#pragma once

#include <optional>

#include "ksef/batch_package.h"

namespace tavrix::ksef {

/// Where one part goes.
struct PartAddress {
    std::string method;
    base::SecretUtf8 url;  ///< carries the permission to write there
    std::vector<ports::HttpHeader> headers;
    bool sent = false;
};

/// A batch session whose parts are on their way.
struct BatchState {
    base::Text service;  ///< the base address
    std::string reference;
    SessionKey session_key;
    Package package;
    std::vector<PartAddress> addresses;  ///< one for each part of the package
};

/// Keeps a session's state in a file that only its owner may read, without a copy of the key
/// anywhere else in memory or on the disk. Throws base::AutomationError.
void write_state(ports::DataFiles& files, const base::Text& path, const BatchState& state);
/// Adds that a part (from 0) was sent. May be called by several threads at once.
void add_sent_part(ports::DataFiles& files, const base::Text& path, std::size_t part);
/// What the file holds; nothing when there is none. Throws for one that is no state.
std::optional<BatchState> read_state(ports::DataFiles& files, const base::Text& path);

}  // namespace tavrix::ksef
