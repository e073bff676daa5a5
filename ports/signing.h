#pragma once

#include <functional>
#include <memory>

#include "base/date_time.h"
#include "base/secret.h"

namespace tavrix::ports {

/// What a signature says of its own time (RFC 5652 11.3): `in_attribute` signs it, `nowhere` leaves
/// it to the document, as the baseline profile of ETSI EN 319 142-1 wants it.
enum class SigningTime { in_attribute, nowhere };

/// One signature over bytes that come in pieces.
class DetachedSignature {
  public:
    virtual ~DetachedSignature() = default;
    virtual void add(base::ByteView data) = 0;
    /// CMS SignedData (RFC 5652) in DER, without the data. Nothing may be added any more.
    virtual base::Bytes finish() = 0;
};

/// A certificate with its private key and the certificates between it and its root.
class Signer {
  public:
    virtual ~Signer() = default;
    /// The holder as people call him: the certificate's common name, or what comes nearest to one.
    virtual base::Text name() const = 0;
    /// False for keys that neither RSA with PKCS#1 padding nor ECDSA takes.
    virtual bool can_sign() const = 0;
    /// SHA-256, with signing-certificate-v2 (RFC 5035). `moment` is in UTC.
    virtual std::unique_ptr<DetachedSignature> begin(const base::DateTime& moment,
                                                     SigningTime time) = 0;
};

/// What was found out about one signature.
struct SignatureFindings {
    /// The data is what was signed, with the key of the certificate inside.
    bool intact = false;
    /// The certificate leads to one of the trusted ones.
    bool trusted = false;
    base::Text signer;
    base::Text issuer;
};

/// Gives the next bytes of what was signed; 0 at its end.
using ContentReader = std::function<std::size_t(std::span<std::uint8_t>)>;

/// Signatures of documents. Functions throw base::AutomationError when the operation fails.
class Signing {
  public:
    virtual ~Signing() = default;
    /// The first private key of a PKCS#12 file (RFC 7292) that has a certificate there. Each of
    /// `passwords` is tried in turn, as the bytes that they are; a file without an integrity check
    /// is taken when its content can be decrypted.
    virtual std::unique_ptr<Signer> load_pfx(base::ByteView pfx,
                                             std::span<const base::SecretBytes> passwords) = 0;
    /// Judges what DetachedSignature::finish gave; zeros may follow it. `trusted` are certificates
    /// in PEM, empty for none.
    virtual SignatureFindings verify(base::ByteView signature, const ContentReader& content,
                                     std::string_view trusted) = 0;
    /// AES in CBC mode with PKCS#7 padding; `key` has 16 or 32 bytes. A random IV stands in front.
    virtual base::Bytes aes_cbc_with_iv(base::ByteView key, base::ByteView plain) = 0;
    virtual void fill_random(std::span<std::uint8_t> bytes) = 0;
    /// The system's time in UTC, whole seconds.
    virtual base::DateTime now_utc() = 0;
};

}  // namespace tavrix::ports
