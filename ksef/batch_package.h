#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ksef/online_session.h"
#include "ksef/session_key.h"

namespace tavrix::ksef {

/// The largest part of a package that the service takes, before encryption.
constexpr std::uint64_t largest_part_bytes = 100'000'000;

/// One stretch of a package, which is encrypted by itself: with padding of its own.
struct PackagePart {
    std::uint64_t offset = 0;
    std::uint64_t plain_bytes = 0;
    std::string encrypted_hash;  ///< SHA-256, Base64
};

/// What the opening of a batch session says of a package.
struct Package {
    base::Text path;
    std::uint64_t bytes = 0;
    std::string hash;  ///< SHA-256, Base64
    std::vector<PackagePart> parts;
};

/// Told how many bytes more were sent; a part that failed takes its own back.
using SentBytes = std::function<void(std::int64_t)>;

/// Reads the package once, in pieces, and encrypts it without keeping anything: in parts of
/// `part_bytes`, the last one shorter, and of an empty package one empty part. Throws
/// base::AutomationError when the file cannot be read, or shrinks or grows meanwhile.
Package measure_package(ports::DataFiles& files, ports::Crypto& crypto, const base::Text& path,
                        const SessionKey& session_key, std::uint64_t part_bytes);

std::uint64_t encrypted_bytes(std::uint64_t plain_bytes);

/// The body that opens a session for the package.
Body opening_of(const Package& package, const FormCode& form, const SessionKey& session_key);

/// A part while it is sent, of a package that outlives it: read and encrypted again. Should it no
/// longer be what was announced, reading throws before the last byte is given away, so that nothing
/// whole arrives.
class PartSource final : public ports::BodySource {
  public:
    PartSource(ports::DataFiles& files, ports::Crypto& crypto, const Package& package,
               const PackagePart& part, const SessionKey& session_key, SentBytes on_sent = {});
    ~PartSource() override;
    std::uint64_t size() const override;
    std::size_t read(std::span<std::uint8_t> buffer) override;

  private:
    class Encrypted;
    std::unique_ptr<ports::FileReader> file_;
    std::unique_ptr<Encrypted> encrypted_;
    std::unique_ptr<ports::Sha256> hash_;
    const std::string& announced_hash_;
    const base::Text& path_;
    std::uint64_t bytes_;
    std::uint64_t left_;
    SentBytes on_sent_;

    friend Package measure_package(ports::DataFiles&, ports::Crypto&, const base::Text&,
                                   const SessionKey&, std::uint64_t);
};

}  // namespace tavrix::ksef
