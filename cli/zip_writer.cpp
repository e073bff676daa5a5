#include "cli/zip_writer.h"

#include <zlib.h>

#include <limits>
#include <new>

#include "base/error.h"

namespace tavrix::cli {
namespace {

constexpr std::uint16_t version_for_deflate = 20;
constexpr std::uint16_t method_deflate = 8;
constexpr std::uint16_t first_day = 1 << 5 | 1;  // 1980-01-01, where this calendar begins

template <typename Number>
void put(std::string& to, Number number) {
    for (std::size_t i = 0; i < sizeof number; ++i)
        to += static_cast<char>(static_cast<std::uint64_t>(number) >> 8 * i & 0xFF);
}

base::Bytes deflated(base::ByteView content) {
    z_stream stream{};
    // Without zlib's own frame around it.
    constexpr int raw = -MAX_WBITS;
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, raw, 8, Z_DEFAULT_STRATEGY) !=
        Z_OK)
        throw std::bad_alloc();
    base::Bytes result(deflateBound(&stream, static_cast<uLong>(content.size())));
    stream.next_in = const_cast<Bytef*>(content.data());
    stream.avail_in = static_cast<uInt>(content.size());
    stream.next_out = result.data();
    stream.avail_out = static_cast<uInt>(result.size());
    const int outcome = deflate(&stream, Z_FINISH);
    result.resize(stream.total_out);
    deflateEnd(&stream);
    if (outcome != Z_STREAM_END) throw std::bad_alloc();
    return result;
}

}  // namespace

void ZipWriter::write(base::ByteView bytes) {
    file_.write(bytes);
    written_ += bytes.size();
    if (written_ > std::numeric_limits<std::uint32_t>::max()) {
        throw base::AutomationError(base::ErrorNumber::component_failed, u"ZIP",
                                    u"Paczka przekracza 4 GiB");
    }
}

void ZipWriter::add(const std::string& name, base::ByteView content) {
    const base::Bytes packed = deflated(content);
    // 4.3.7 and 4.3.12: what the local header and the directory have in common.
    std::string common;
    put<std::uint16_t>(common, version_for_deflate);
    put<std::uint16_t>(common, 0);  // flags
    put<std::uint16_t>(common, method_deflate);
    put<std::uint16_t>(common, 0);  // midnight
    put<std::uint16_t>(common, first_day);
    put(common,
        static_cast<std::uint32_t>(crc32(0, content.data(), static_cast<uInt>(content.size()))));
    put(common, static_cast<std::uint32_t>(packed.size()));
    put(common, static_cast<std::uint32_t>(content.size()));
    put(common, static_cast<std::uint16_t>(name.size()));
    put<std::uint16_t>(common, 0);  // extra field

    directory_ += "PK\x01\x02";
    put<std::uint16_t>(directory_, version_for_deflate);  // made by, on a FAT disk
    directory_ += common;
    put<std::uint16_t>(directory_, 0);  // comment
    put<std::uint16_t>(directory_, 0);  // disk
    put<std::uint16_t>(directory_, 0);  // internal attributes
    put<std::uint32_t>(directory_, 0);  // external attributes
    put(directory_, static_cast<std::uint32_t>(written_));
    directory_ += name;
    ++entries_;

    write(base::bytes_of("PK\x03\x04" + common + name));
    write(packed);
}

std::uint64_t ZipWriter::finish() {
    // 4.3.16
    std::string end = "PK\x05\x06";
    put<std::uint32_t>(end, 0);  // disks
    put(end, entries_);
    put(end, entries_);
    put(end, static_cast<std::uint32_t>(directory_.size()));
    put(end, static_cast<std::uint32_t>(written_));
    put<std::uint16_t>(end, 0);  // comment
    write(base::bytes_of(directory_ + end));
    return written_;
}

}  // namespace tavrix::cli
