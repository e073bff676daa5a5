#include "ksef/batch_package.h"

#include <algorithm>

#include "base/base64.h"
#include "base/error.h"

namespace tavrix::ksef {
namespace {

// Large enough for the ciphers' inner loops, small enough for the processor's cache.
constexpr std::size_t piece_bytes = 128 * 1024;
constexpr std::size_t block_bytes = ports::AesEncryption::block_bytes;

[[noreturn]] void fail_changed(const base::Text& path) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm",
                                u"Plik zmienił się w czasie wysyłki: " + path);
}

}  // namespace

// One part of a file, encrypted while it is read; the plain bytes go through `plain_hash` too.
class PartSource::Encrypted {
  public:
    Encrypted(ports::Crypto& crypto, ports::FileReader& file, const base::Text& path,
              const SessionKey& session_key, ports::Sha256* plain_hash, std::uint64_t offset,
              std::uint64_t plain_bytes)
        : file_(file),
          path_(path),
          plain_hash_(plain_hash),
          encryption_(crypto.begin_aes_256_cbc(session_key.key.view(), session_key.iv)),
          left_(plain_bytes) {
        file_.seek(offset);
    }

    /// Gives the next bytes, valid until the next call; none at the end.
    base::ByteView next(std::size_t most) {
        if (ready_.empty()) ready_ = encrypt_piece();
        const base::ByteView given = ready_.first(std::min(most, ready_.size()));
        ready_ = ready_.subspan(given.size());
        return given;
    }

  private:
    base::ByteView encrypt_piece() {
        if (done_) return {};
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left_, plain_.size()));
        const base::ByteView plain = base::ByteView(plain_).first(wanted);
        if (file_.read(std::span(plain_).first(wanted)) < wanted) fail_changed(path_);
        left_ -= wanted;
        if (plain_hash_ != nullptr) plain_hash_->add(plain);
        std::size_t size = encryption_->add(plain, cipher_);
        done_ = left_ == 0;
        if (done_) size += encryption_->finish(std::span(cipher_).subspan(size));
        return base::ByteView(cipher_).first(size);
    }

    ports::FileReader& file_;
    const base::Text& path_;
    ports::Sha256* plain_hash_;
    std::unique_ptr<ports::AesEncryption> encryption_;
    std::uint64_t left_;
    bool done_ = false;
    base::Bytes plain_ = base::Bytes(piece_bytes);
    base::Bytes cipher_ = base::Bytes(piece_bytes + 2 * block_bytes);
    base::ByteView ready_;
};

std::uint64_t encrypted_bytes(std::uint64_t plain_bytes) {
    return plain_bytes / block_bytes * block_bytes + block_bytes;
}

Package measure_package(ports::DataFiles& files, ports::Crypto& crypto, const base::Text& path,
                        const SessionKey& session_key, std::uint64_t part_bytes) {
    Package package{path, 0, {}, {}};
    const auto file = files.open(path);
    package.bytes = file->size();
    const auto plain_hash = crypto.begin_sha256();
    std::uint64_t offset = 0;
    do {
        const std::uint64_t plain = std::min(part_bytes, package.bytes - offset);
        const auto hash = crypto.begin_sha256();
        PartSource::Encrypted part(crypto, *file, path, session_key, plain_hash.get(), offset,
                                   plain);
        for (;;) {
            const base::ByteView piece = part.next(piece_bytes + block_bytes);
            if (piece.empty()) break;
            hash->add(piece);
        }
        package.parts.push_back({offset, plain, base::base64_encode(hash->finish())});
        offset += plain;
    } while (offset < package.bytes);
    std::uint8_t more = 0;
    if (file->read({&more, 1}) != 0) fail_changed(path);
    package.hash = base::base64_encode(plain_hash->finish());
    return package;
}

Body opening_of(const Package& package, const FormCode& form, const SessionKey& session_key) {
    Body body;
    body["formCode"]["systemCode"] = base::to_utf8(form.system_code);
    body["formCode"]["schemaVersion"] = base::to_utf8(form.schema_version);
    body["formCode"]["value"] = base::to_utf8(form.value);
    body["batchFile"]["fileSize"] = package.bytes;
    body["batchFile"]["fileHash"] = package.hash;
    Body parts = Body::array();
    for (const PackagePart& part : package.parts) {
        Body entry;
        entry["ordinalNumber"] = parts.size() + 1;
        entry["fileSize"] = encrypted_bytes(part.plain_bytes);
        entry["fileHash"] = part.encrypted_hash;
        parts.push_back(std::move(entry));
    }
    body["batchFile"]["fileParts"] = std::move(parts);
    body["encryption"] = encryption_of(session_key);
    body["offlineMode"] = false;
    return body;
}

PartSource::PartSource(ports::DataFiles& files, ports::Crypto& crypto, const Package& package,
                       const PackagePart& part, const SessionKey& session_key, SentBytes on_sent)
    : file_(files.open(package.path)),
      encrypted_(std::make_unique<Encrypted>(crypto, *file_, package.path, session_key, nullptr,
                                             part.offset, part.plain_bytes)),
      hash_(crypto.begin_sha256()),
      announced_hash_(part.encrypted_hash),
      path_(package.path),
      bytes_(encrypted_bytes(part.plain_bytes)),
      left_(bytes_),
      on_sent_(std::move(on_sent)) {}

PartSource::~PartSource() = default;

std::uint64_t PartSource::size() const {
    return bytes_;
}

std::size_t PartSource::read(std::span<std::uint8_t> buffer) {
    const base::ByteView piece = encrypted_->next(buffer.size());
    hash_->add(piece);
    left_ -= piece.size();
    if (left_ == 0 && !piece.empty() && base::base64_encode(hash_->finish()) != announced_hash_) {
        fail_changed(path_);
    }
    std::ranges::copy(piece, buffer.begin());
    if (on_sent_) on_sent_(static_cast<std::int64_t>(piece.size()));
    return piece.size();
}

}  // namespace tavrix::ksef
