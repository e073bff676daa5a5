#pragma once

#include <cstdio>
#include <filesystem>

#include "tests/support/scratch_folder.h"

namespace tavrix::test {

/// A real mail server on free ports of 127.0.0.1, with TLS of its own making: jan and ola have a
/// mailbox, "tajne" is jan's password, nobody is served without it.
class Exim {
  public:
    static bool is_installed() { return std::filesystem::exists("/usr/sbin/exim4"); }

    Exim();
    ~Exim();
    Exim(const Exim&) = delete;
    Exim& operator=(const Exim&) = delete;

    /// STARTTLS is offered here,
    int port() const noexcept { return port_; }
    /// and here TLS begins with the first byte.
    int tls_port() const noexcept { return tls_port_; }
    std::string certificate() const { return folder_.path() / "cert.pem"; }
    /// The file of the one message that came for `user` since the last call. Waits for it.
    std::string delivered_to(const std::string& user);
    /// How many messages wait there, without waiting for one.
    std::size_t count_for(const std::string& user) const;

  private:
    ScratchFolder folder_;
    std::FILE* pipe_ = nullptr;
    int pid_ = 0;
    int port_ = 0;
    int tls_port_ = 0;
};

}  // namespace tavrix::test
