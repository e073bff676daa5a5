// What happens to a package once its session is closed: its parts are checked, decrypted and
// joined, its archive is looked through, its invoices become invoices of the session.
#pragma once

#include <fstream>
#include <memory>
#include <optional>
#include <string>

#include "sandbox/basics/crypto.h"
#include "sandbox/documents/archive.h"
#include "sandbox/service/service.h"

namespace tavrix::sandbox {

/// The work on one package, in pieces small enough for requests to be served in between. It is not
/// stored: after a restart it begins again and leaves out the invoices that were taken before.
class PackageWork {
  public:
    PackageWork(Service& service, std::string session_reference);

    const std::string& session_reference() const { return reference_; }
    /// Does a piece. False once the package is unpacked or has failed; either is then noted in the
    /// session, and the files are gone.
    bool step();

  private:
    Session& session() { return service_.state.sessions.at(reference_); }
    Package& package() { return *session().package; }
    void open_part();
    void decrypt_piece();
    void finish_part();
    void check_archive();
    void survey_file();
    void take_invoice();
    void finish(Status failure);

    Service& service_;
    std::string reference_;
    void (PackageWork::*next_)() = &PackageWork::open_part;

    std::size_t part_ = 0;
    std::ifstream part_file_;
    std::optional<Sha256Stream> part_hash_;
    std::optional<AesCbcDecryption> decryption_;
    std::ofstream archive_file_;
    Sha256Stream archive_hash_;
    std::int64_t archive_size_ = 0;
    std::unique_ptr<ArchiveReader> reader_;
    std::size_t files_ = 0;
    /// Files that became invoices before a restart and are still to be passed over.
    std::size_t taken_before_ = 0;
};

/// True while the package of some closed session has not been unpacked.
bool packages_are_waiting(const Service& service);

/// Works on waiting packages, oldest first, for about as long as given.
void work_on_packages(Service& service, std::chrono::milliseconds time);

}  // namespace tavrix::sandbox
