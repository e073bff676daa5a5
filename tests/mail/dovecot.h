#pragma once

#include <string>

#include "tests/support/scratch_folder.h"

namespace tavrix::test {

/// A real POP3 server on loopback, with one mailbox of the user "jan" and the password "tajne":
/// in the clear or after STLS on one port, through TLS from the first byte on another. Stopped by
/// its pid.
class Dovecot {
  public:
    static bool is_installed();
    Dovecot();
    ~Dovecot();
    Dovecot(const Dovecot&) = delete;
    Dovecot& operator=(const Dovecot&) = delete;

    std::uint16_t port() const noexcept { return port_; }
    std::uint16_t tls_port() const noexcept { return tls_port_; }
    std::string certificate() const { return below("certificate.pem"); }
    /// Where new messages are put, a file for each (Maildir).
    std::string new_mail() const { return below("mail/new"); }
    /// How many messages there are, read or not.
    std::size_t count() const;
    /// Gives what was put there to the mailbox's owner.
    void deliver() const;

  private:
    std::string below(const std::string& name) const { return (folder_.path() / name).string(); }
    std::string configuration() const;
    bool answers() const;

    ScratchFolder folder_;
    std::uint16_t port_;
    std::uint16_t tls_port_;
    int pid_ = 0;
};

}  // namespace tavrix::test
