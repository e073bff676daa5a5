#include "sandbox/service/package_work.h"

#include <spdlog/spdlog.h>

#include <algorithm>

#include "sandbox/service/processing.h"
#include "sandbox/store/statuses.h"

namespace tavrix::sandbox {
namespace {

constexpr std::size_t piece_bytes = 1 << 20;
/// A number of files is said exactly up to here.
constexpr std::size_t most_files_counted = 100'000;

/// Ends the work on a package with a code of its session's status.
struct PackageFailure {
    int code;
    std::vector<std::string> details;
};

void require_written(const std::ofstream& file) {
    if (!file) throw std::runtime_error("the archive of a package could not be written");
}

}  // namespace

PackageWork::PackageWork(Service& service, std::string session_reference)
    : service_(service), reference_(std::move(session_reference)) {}

bool PackageWork::step() {
    try {
        (this->*next_)();
    } catch (PackageFailure& failure) {
        finish(make_status(StatusOf::batch_session, failure.code, std::move(failure.details)));
    } catch (const ArchiveError& error) {
        finish(make_status(StatusOf::batch_session, 430, {error.what()}));
    } catch (const std::exception& error) {
        // A full disk, most likely: the session must not stay in processing for ever.
        spdlog::error("a package could not be unpacked: {}", error.what());
        finish(make_status(StatusOf::batch_session, 500));
    }
    return !package().unpacked;
}

void PackageWork::open_part() {
    if (part_ == 0) {
        Status ordered;
        apply_verdicts(service_, "processing/package", StatusOf::batch_session, ordered);
        if (ordered.code != 0) return finish(std::move(ordered));
        archive_file_.open(service_.packages.archive(reference_),
                           std::ios::binary | std::ios::trunc);
    }
    const auto key = base64_decode(session().symmetric_key).value_or("");
    if (key.empty())
        throw PackageFailure{415, {"Rozszyfrowania klucza symetrycznego zakończone błędem"}};
    part_file_ =
        std::ifstream(service_.packages.part(reference_, int(part_) + 1), std::ios::binary);
    part_hash_.emplace();
    // Every part is encrypted by itself, with the session's one key and vector.
    decryption_.emplace(key, base64_decode(session().initialization_vector).value_or(""));
    next_ = &PackageWork::decrypt_piece;
}

void PackageWork::decrypt_piece() {
    std::string piece(piece_bytes, '\0');
    part_file_.read(piece.data(), std::streamsize(piece.size()));
    piece.resize(std::size_t(part_file_.gcount()));
    if (piece.empty()) return finish_part();
    part_hash_->add(piece);
    const std::string plain = decryption_->add(piece);
    archive_hash_.add(plain);
    archive_size_ += std::int64_t(plain.size());
    archive_file_.write(plain.data(), std::streamsize(plain.size()));
}

void PackageWork::finish_part() {
    const std::string& declared = package().parts[part_].hash;
    if (part_hash_->base64() != declared)
        throw PackageFailure{405,
                             {"Skrót SHA-256 części: '" + std::to_string(part_ + 1) +
                              "' nie zgadza się z zadeklarowanym skrótem: " + declared}};
    const auto last = decryption_->finish();
    if (!last) throw PackageFailure{435, {}};
    archive_hash_.add(*last);
    archive_size_ += std::int64_t(last->size());
    archive_file_.write(last->data(), std::streamsize(last->size()));
    require_written(archive_file_);
    next_ =
        ++part_ < package().parts.size() ? &PackageWork::open_part : &PackageWork::check_archive;
}

void PackageWork::check_archive() {
    archive_file_.close();
    require_written(archive_file_);
    if (archive_hash_.base64() != package().hash)
        throw PackageFailure{430,
                             {"Skrót SHA-256 przesłanej paczki faktur nie jest zgodny z "
                              "zadeklarowanym skrótem: " +
                              package().hash}};
    if (archive_size_ != package().size)
        throw PackageFailure{430, {"Rozmiar paczki faktur jest niezgodny z zadeklarowanym."}};
    reader_ = std::make_unique<ArchiveReader>(service_.packages.archive(reference_),
                                              package().compression);
    next_ = &PackageWork::survey_file;
}

/// All files are read once before the first becomes an invoice: a package that turns out to be
/// broken at its end has none.
void PackageWork::survey_file() {
    if (const auto file = reader_->next()) {
        if (file->is_folder || ++files_ <= most_files_counted) return;
    }
    if (files_ > most_invoices_per_session)
        throw PackageFailure{420,
                             {"Przekroczono dopuszczalną liczbę faktur w paczce: '" +
                              std::to_string(most_invoices_per_session) +
                              "'. Liczba faktur w paczce: '" + std::to_string(files_) + "'."}};
    if (files_ == 0) throw PackageFailure{440, {"Nie przesłano faktur"}};
    reader_ = std::make_unique<ArchiveReader>(service_.packages.archive(reference_),
                                              package().compression);
    taken_before_ = session().invoices.size();
    next_ = &PackageWork::take_invoice;
}

void PackageWork::take_invoice() {
    auto file = reader_->next();
    if (!file) return finish({});
    if (file->is_folder) return;
    if (taken_before_ > 0) {
        --taken_before_;
        return;
    }
    Session& session = this->session();
    Invoice invoice;
    invoice.reference = service_.new_reference("EE");
    invoice.session_reference = reference_;
    invoice.ordinal = int(session.invoices.size()) + 1;
    invoice.file_name = std::move(file->name);
    invoice.invoice_hash = std::move(file->hash);
    invoice.invoice_size = file->size;
    invoice.xml = std::move(file->content);
    invoice.offline_declared = package().offline_declared;
    // A package is received when its session is opened.
    invoice.received = session.created;
    invoice.stage_since = session.updated = service_.now();
    invoice.status = make_status(StatusOf::invoice, 100);
    session.invoices.push_back(invoice.reference);
    const Invoice& kept = service_.state.add(std::move(invoice));
    settle_invoices(service_);
    if (kept.stage != InvoiceStage::finished) service_.save(kept);
}

void PackageWork::finish(Status failure) {
    Session& session = this->session();
    session.package->unpacked = true;
    session.package->failure = std::move(failure);
    // Windows removes no file that is open.
    reader_.reset();
    part_file_.close();
    archive_file_.close();
    service_.packages.remove(reference_);
    service_.save(session);
}

namespace {

const Session* waiting_session(const Service& service) {
    for (const std::string& reference : service.state.closing_sessions) {
        const Session& session = service.state.sessions.at(reference);
        if (session.package && !session.package->unpacked) return &session;
    }
    return nullptr;
}

}  // namespace

bool packages_are_waiting(const Service& service) {
    return waiting_session(service) != nullptr;
}

void work_on_packages(Service& service, std::chrono::milliseconds time) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (const Session* session = waiting_session(service)) {
        if (!service.package_work ||
            service.package_work->session_reference() != session->reference)
            service.package_work = std::make_unique<PackageWork>(service, session->reference);
        while (service.package_work->step())
            if (std::chrono::steady_clock::now() >= end) return;
        service.package_work.reset();
    }
}

}  // namespace tavrix::sandbox
