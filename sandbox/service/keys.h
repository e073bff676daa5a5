// The service's public keys: what clients encrypt tokens and symmetric keys with.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sandbox/basics/certificates.h"
#include "sandbox/basics/clock.h"
#include "sandbox/basics/json.h"

namespace tavrix::sandbox {

inline constexpr std::string_view token_usage = "KsefTokenEncryption";
inline constexpr std::string_view symmetric_key_usage = "SymmetricKeyEncryption";

/// Every key pair the sandbox has published. Not synchronised; the sandbox's mutex guards it.
class KeyRing {
  public:
    /// One new key pair per usage, valid from a day before `now` for two years.
    static KeyRing generate(Instant now);
    /// What save() wrote. Throws nlohmann::json::exception or std::runtime_error.
    static KeyRing load(std::string_view saved);
    std::string save() const;

    /// Publishes a second certificate of a usage, the newer one last; both are good until the older
    /// expires.
    void rotate(std::string_view usage, Instant now);

    /// The list of certificates valid at a moment, as the service publishes it.
    Json published(Instant now, const TimeFormat& time) const;

    /// True when the identifier names a key of this usage that is valid now.
    bool knows(std::string_view usage, std::string_view public_key_id, Instant now) const;

    /// Decrypts with the first valid key of the usage that fits; with a given identifier, with that
    /// key only.
    std::optional<std::string> decrypt(std::string_view usage, std::string_view ciphertext,
                                       Instant now, std::string_view public_key_id = {}) const;

  private:
    struct Key {
        std::string usage;
        KeyPair pem;
        KeyHandle key;
        std::string certificate_base64;
        std::string certificate_id;
        std::string public_key_id;
        Validity validity;

        bool valid_at(Instant now) const { return validity.from <= now && now < validity.to; }
    };
    static Key make_key(std::string usage, KeyPair pem);

    std::vector<Key> keys_;
};

}  // namespace tavrix::sandbox
