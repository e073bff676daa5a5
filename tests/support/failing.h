#pragma once

#include <new>

#include "base/error.h"
#include "ports/crypto.h"
#include "ports/database.h"
#include "ports/file_store.h"
#include "ports/files.h"

namespace tavrix::test {

/// Counts the calls of the ports that share it and fails one of them.
class FailingAt {
  public:
    using Failure = void (*)();

    /// The `call`-th from now on, the first is 1.
    void arm(int call, Failure failure) {
        left_ = call;
        failure_ = failure;
    }
    void count() {
        if (--left_ == 0) failure_();
    }
    bool struck() const { return left_ <= 0; }

  private:
    int left_ = 0;
    Failure failure_ = nullptr;
};

// What may fail.
[[noreturn]] inline void access_denied() {
    throw base::AutomationError(base::ErrorNumber::database_failed, u"test", u"odmowa dostępu");
}
[[noreturn]] inline void out_of_space() {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"test", u"brak miejsca");
}
[[noreturn]] inline void out_of_memory() {
    throw std::bad_alloc();
}

/// Tells `story` again and again: with its first call failing, then its second, until it is told
/// without a failure. Gives the number of the calls. `story` is given the call that fails.
template <typename Story>
int fail_each_call(FailingAt& failing, FailingAt::Failure failure, Story story) {
    for (int call = 1;; ++call) {
        failing.arm(call, failure);
        story(call);
        if (!failing.struck()) return call - 1;
    }
}

/// What the decorators have in common: the way to the real port, which counts.
template <typename Port>
class Failing : public Port {
  public:
    Failing(Port& port, FailingAt& failing) : port_(port), failing_(failing) {}

  protected:
    Port& through() {
        failing_.count();
        return port_;
    }
    Port& port_;
    FailingAt& failing_;
};

/// The same for what the decorated port has made, which the decorator owns.
template <typename Port>
class FailingOwner : public Failing<Port> {
  public:
    FailingOwner(std::unique_ptr<Port> port, FailingAt& failing)
        : Failing<Port>(*port, failing), owned_(std::move(port)) {}

  private:
    std::unique_ptr<Port> owned_;
};

struct FailingRecordset final : FailingOwner<ports::Recordset> {
    using FailingOwner::FailingOwner;
    bool at_end() override { return through().at_end(); }
    void move_next() override { through().move_next(); }
    ports::Value field(base::TextView name) override { return through().field(name); }
    void set_field(base::TextView name, const ports::Value& value) override {
        through().set_field(name, value);
    }
    std::size_t capacity(base::TextView name) override { return through().capacity(name); }
    void add_new() override { through().add_new(); }
    void update_batch() override { through().update_batch(); }
};

struct FailingDatabase final : Failing<ports::Database> {
    using Failing::Failing;
    std::unique_ptr<ports::Recordset> open(base::TextView sql) override {
        return std::make_unique<FailingRecordset>(through().open(sql), failing_);
    }
    void execute(base::TextView sql) override { through().execute(sql); }
    base::Text name() override { return through().name(); }
};

struct FailingCrypto final : Failing<ports::Crypto> {
    using Failing::Failing;
    void fill_random(std::span<std::uint8_t> bytes) override { through().fill_random(bytes); }
    base::Bytes sha256(base::ByteView data) override { return through().sha256(data); }
    base::Bytes aes_256_cbc_encrypt(base::ByteView key, base::ByteView iv,
                                    base::ByteView plain) override {
        return through().aes_256_cbc_encrypt(key, iv, plain);
    }
    std::unique_ptr<ports::Sha256> begin_sha256() override { return through().begin_sha256(); }
    std::unique_ptr<ports::AesEncryption> begin_aes_256_cbc(base::ByteView key,
                                                            base::ByteView iv) override {
        return through().begin_aes_256_cbc(key, iv);
    }
    std::unique_ptr<ports::PublicKey> key_of_certificate(std::string_view pem) override {
        return through().key_of_certificate(pem);
    }
    std::unique_ptr<ports::PublicKey> load_public_key(std::string_view pem) override {
        return through().load_public_key(pem);
    }
    base::Bytes rsa_oaep_sha256_encrypt(const ports::PublicKey& key,
                                        base::ByteView plain) override {
        return through().rsa_oaep_sha256_encrypt(key, plain);
    }
    std::unique_ptr<ports::PrivateKey> load_private_key(std::string_view pem,
                                                        std::string_view pass_phrase) override {
        return through().load_private_key(pem, pass_phrase);
    }
    base::Bytes ecdsa_sha256_sign(const ports::PrivateKey& key, base::ByteView data) override {
        return through().ecdsa_sha256_sign(key, data);
    }
    base::Bytes rsa_pss_sha256_sign(const ports::PrivateKey& key, base::ByteView data) override {
        return through().rsa_pss_sha256_sign(key, data);
    }
};

struct FailingReader final : FailingOwner<ports::FileReader> {
    using FailingOwner::FailingOwner;
    std::uint64_t size() override { return through().size(); }
    void seek(std::uint64_t position) override { through().seek(position); }
    std::size_t read(std::span<std::uint8_t> buffer) override { return through().read(buffer); }
};

struct FailingWriter final : FailingOwner<ports::FileWriter> {
    using FailingOwner::FailingOwner;
    void write(base::ByteView bytes) override { through().write(bytes); }
    void keep() override { through().keep(); }
};

struct FailingFiles final : Failing<ports::DataFiles> {
    using Failing::Failing;
    bool is_file(base::TextView path) override { return through().is_file(path); }
    void copy(base::TextView from, base::TextView to) override { through().copy(from, to); }
    void append(base::TextView path, base::ByteView bytes) override {
        through().append(path, bytes);
    }
    std::unique_ptr<ports::FileReader> open(base::TextView path) override {
        return std::make_unique<FailingReader>(through().open(path), failing_);
    }
    std::unique_ptr<ports::FileReader> open_growing(base::TextView path) override {
        return std::make_unique<FailingReader>(through().open_growing(path), failing_);
    }
    std::unique_ptr<ports::FileWriter> create(base::TextView path,
                                              ports::Readers readers) override {
        return std::make_unique<FailingWriter>(through().create(path, readers), failing_);
    }
    std::unique_ptr<ports::FileWriter> create_like(base::TextView path,
                                                   base::TextView origin) override {
        return std::make_unique<FailingWriter>(through().create_like(path, origin), failing_);
    }
    void remove(base::TextView path) override { through().remove(path); }
    void wipe(base::TextView path) override { through().wipe(path); }
};

struct FailingFileStore final : Failing<ports::FileStore> {
    using Failing::Failing;
    void make_folder(base::TextView path) override { through().make_folder(path); }
    void write(base::TextView path, base::ByteView bytes) override { through().write(path, bytes); }
    void overwrite(base::TextView path, base::ByteView bytes) override {
        through().overwrite(path, bytes);
    }
    bool write_new(base::TextView path, base::ByteView bytes) override {
        return through().write_new(path, bytes);
    }
};

}  // namespace tavrix::test
