#include "tests/sandbox/packed.h"

#include <archive.h>
#include <archive_entry.h>

namespace tavrix::sandbox::testing {

std::string packed(const Files& files, Packing packing) {
    std::size_t room = 1 << 20;
    for (const auto& [name, content] : files) room += 2 * name.size() + content.size() + 2048;
    std::string bytes(room, '\0');
    archive* writer = archive_write_new();
    if (packing == Packing::tar_gz) {
        archive_write_set_format_gnutar(writer);
        archive_write_add_filter_gzip(writer);
    } else {
        archive_write_set_format_zip(writer);
    }
    if (packing == Packing::encrypted_zip) {
        archive_write_set_options(writer, "zip:encryption=traditional");
        archive_write_set_passphrase(writer, "tajne");
    }
    std::size_t used = 0;
    archive_write_open_memory(writer, bytes.data(), bytes.size(), &used);
    for (const auto& [name, content] : files) {
        archive_entry* entry = archive_entry_new();
        archive_entry_set_pathname(entry, name.c_str());
        archive_entry_set_perm(entry, 0644);
        archive_entry_set_size(entry, la_int64_t(content.size()));
        archive_entry_set_filetype(entry, name.ends_with('/') ? AE_IFDIR : AE_IFREG);
        archive_write_header(writer, entry);
        archive_write_data(writer, content.data(), content.size());
        archive_entry_free(entry);
    }
    archive_write_close(writer);
    archive_write_free(writer);
    bytes.resize(used);
    return bytes;
}

}  // namespace tavrix::sandbox::testing
