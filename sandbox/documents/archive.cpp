#include "sandbox/documents/archive.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>

#include "sandbox/basics/crypto.h"
#include "sandbox/basics/path.h"
#include "sandbox/basics/text.h"
#include "sandbox/documents/verification.h"

namespace tavrix::sandbox {
namespace {

/// What is unpacked stays in memory, as every document does.
constexpr std::int64_t most_unpacked = 1'000'000'000;
/// Of one file: between two of them other requests are served.
constexpr std::int64_t most_of_one_file = 100'000'000;
/// Ten thousand entries of a directory take a tenth of it.
constexpr std::int64_t most_of_a_directory = 32'000'000;
// Source: `invoiceFileName` of the contract.
constexpr std::size_t longest_name = 128;
/// An invoice needs none; each costs time and a name to remember.
constexpr std::size_t most_folders = 5'000;

std::string name_of(archive_entry* entry) {
    const char* name = archive_entry_pathname_utf8(entry);
    if (name == nullptr) name = archive_entry_pathname(entry);
    return name == nullptr ? "" : name;
}

bool leads_out(std::string_view name) {
    if (name.starts_with('/') || name.find('\\') != std::string_view::npos ||
        name.find(':') != std::string_view::npos)
        return true;
    for (std::size_t at = 0; at <= name.size();) {
        const std::size_t end = std::min(name.find('/', at), name.size());
        if (name.substr(at, end - at) == "..") return true;
        at = end + 1;
    }
    return false;
}

bool has_control_character(std::string_view name) {
    return std::any_of(name.begin(), name.end(),
                       [](unsigned char c) { return c < 0x20 || c == 0x7f; });
}

/// For a message: a name may be as long as the archive.
std::string beginning_of(std::string_view name) {
    if (name.size() <= longest_name) return std::string(name);
    std::size_t cut = longest_name;
    while (cut > 0 && (name[cut] & 0xC0) == 0x80) --cut;
    return std::string(name.substr(0, cut)) + "...";
}

/// Nothing but the record that ends a directory, with its comment. The library takes it for no
/// archive.
bool is_empty_zip(std::ifstream& file) {
    std::array<char, 22> end{};
    const bool whole = bool(file.read(end.data(), std::streamsize(end.size())));
    file.clear();
    file.seekg(0);
    const std::string_view record(end.data(), 20);
    return whole && record.starts_with("PK\5\6") &&
           record.find_first_not_of('\0', 4) == std::string_view::npos;
}

}  // namespace

/// The file, read for the library and with a limit: a directory is read whole before the first of
/// its files is known, and takes many times its size in memory.
struct ArchiveReader::Source {
    std::ifstream file;
    std::array<char, 64 * 1024> buffer{};
    bool limited = false;
    std::int64_t read_since_file = 0;

    static la_ssize_t read(archive* handle, void* data, const void** piece) {
        auto& self = *static_cast<Source*>(data);
        self.file.clear();
        self.file.read(self.buffer.data(), std::streamsize(self.buffer.size()));
        const std::streamsize count = self.file.gcount();
        *piece = self.buffer.data();
        self.read_since_file += std::int64_t(count);
        if (!self.limited || self.read_since_file <= most_of_a_directory) return la_ssize_t(count);
        archive_set_error(handle, EINVAL, "the directory is too large");
        return -1;
    }

    static la_int64_t seek(archive*, void* data, la_int64_t offset, int whence) {
        auto& self = *static_cast<Source*>(data);
        self.file.clear();
        const auto from = whence == SEEK_SET   ? std::ios::beg
                          : whence == SEEK_CUR ? std::ios::cur
                                               : std::ios::end;
        if (!self.file.seekg(offset, from)) return ARCHIVE_FATAL;
        return self.file.tellg();
    }
};

void ArchiveReader::Release::operator()(archive* handle) const {
    archive_read_free(handle);
}

ArchiveReader::ArchiveReader(const std::filesystem::path& file, const std::string& compression)
    : source_(std::make_unique<Source>()), archive_(archive_read_new()) {
    archive* handle = archive_.get();
    if (compression == "TarGz") {
        archive_read_support_filter_gzip(handle);
        archive_read_support_format_tar(handle);
    } else {
        // By its directory, as everybody else reads it: what stands between its files is no file.
        archive_read_support_format_zip_seekable(handle);
        source_->limited = true;
    }
    source_->file.open(file, std::ios::binary);
    if (!source_->file) throw std::runtime_error("cannot open " + utf8_of(file));
    empty_ = source_->limited && is_empty_zip(source_->file);
    if (empty_) return;
    archive_read_set_callback_data(handle, source_.get());
    archive_read_set_read_callback(handle, Source::read);
    archive_read_set_seek_callback(handle, Source::seek);
    if (archive_read_open1(handle) != ARCHIVE_OK) fail();
}

ArchiveReader::~ArchiveReader() = default;

void ArchiveReader::fail() const {
    const char* reason = archive_error_string(archive_.get());
    throw ArchiveError("Nie można odczytać archiwum: " +
                       std::string(reason == nullptr ? "nieznany błąd" : reason));
}

std::optional<ArchivedFile> ArchiveReader::next() {
    if (empty_) return std::nullopt;
    source_->read_since_file = 0;
    archive_entry* entry = nullptr;
    const int result = archive_read_next_header(archive_.get(), &entry);
    if (result == ARCHIVE_EOF) return std::nullopt;
    // A warning is about a name that this computer cannot show; it stays as its bytes.
    if (result != ARCHIVE_OK && result != ARCHIVE_WARN) fail();
    std::string name = name_of(entry);
    if (archive_entry_is_encrypted(entry) != 0)
        throw ArchiveError("Plik w archiwum jest zaszyfrowany: " + beginning_of(name));
    check_name(name);
    if (archive_entry_filetype(entry) == AE_IFDIR) {
        if (++folders_ > most_folders)
            throw ArchiveError("Archiwum zawiera więcej niż " + std::to_string(most_folders) +
                               " folderów.");
        ArchivedFile folder;
        folder.name = std::move(name);
        folder.is_folder = true;
        return folder;
    }
    if (archive_entry_filetype(entry) != AE_IFREG || archive_entry_hardlink(entry) != nullptr)
        throw ArchiveError("Archiwum zawiera element, który nie jest plikiem: " + name);
    return read_file(std::move(name));
}

void ArchiveReader::check_name(const std::string& name) {
    if (name.empty() || leads_out(name) || has_control_character(name))
        throw ArchiveError("Niedozwolona nazwa pliku w archiwum: " + beginning_of(name));
    if (character_count(name) > longest_name)
        throw ArchiveError("Nazwa pliku w archiwum jest dłuższa niż 128 znaków: " +
                           beginning_of(name));
    if (!names_.insert(name).second)
        throw ArchiveError("Nazwa pliku powtarza się w archiwum: " + name);
}

ArchivedFile ArchiveReader::read_file(std::string name) {
    ArchivedFile file;
    file.name = std::move(name);
    Sha256Stream hash;
    std::array<char, 64 * 1024> buffer;
    for (;;) {
        source_->read_since_file = 0;
        const auto count = archive_read_data(archive_.get(), buffer.data(), buffer.size());
        if (count < 0) fail();
        if (count == 0) break;
        const std::string_view piece(buffer.data(), std::size_t(count));
        file.size += count;
        unpacked_ += count;
        if (file.size > most_of_one_file || unpacked_ > most_unpacked)
            throw ArchiveError("Rozpakowane archiwum przekracza dozwolony rozmiar.");
        hash.add(piece);
        if (file.size <= largest_invoice_file)
            file.content += piece;
        else
            std::string().swap(file.content);  // its memory, too: there may be many of these
    }
    file.hash = hash.base64();
    return file;
}

}  // namespace tavrix::sandbox
