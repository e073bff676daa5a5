#pragma once

#include "ksef/batch_package.h"
#include "ksef/online_session.h"

namespace tavrix::ksef {

/// Who is asked to log in, again should the access token have run out over a long upload.
struct BatchLogin {
    const base::SecretText& token;
    const base::Text& tax_number;
};

struct PartsOptions {
    std::uint64_t part_bytes = largest_part_bytes;
    /// How many parts are sent at once. With 1 everything happens on the caller's thread.
    int uploads_at_once = 1;
    /// Where it is kept how far the sending got, until the session is closed: a second call goes on
    /// from there. It holds the session's key, for its owner's eyes only. Empty for nowhere.
    base::Text state_file;
    SentBytes on_sent;
    /// Told the session's reference when all parts have arrived, before it is closed.
    std::function<void(const std::string& reference)> on_uploaded;
};

/// Sends the package at `path` in a batch session of an authenticated client, cut into parts that
/// are encrypted one by one. A part that failed is sent again, as long as its address is good for
/// that; a closing without an answer is looked up before it is repeated.
///
/// Returns the empty text once the session is closed, or the text of what failed. Raises nothing.
base::Text send_in_parts(KsefPorts& ports, Client& client, const base::Text& path,
                         const FormCode& form, const BatchLogin& login,
                         const PartsOptions& options);

}  // namespace tavrix::ksef
