#include "ksef/split_file.h"

#include <algorithm>

#include "base/error.h"
#include "ksef/batch_package.h"

namespace tavrix::ksef {
namespace {

using base::Text;

constexpr std::size_t buffer_bytes = 256 * 1024;

Text three_digits(std::size_t number) {
    const Text digits = base::to_decimal(static_cast<std::int64_t>(number));
    return Text(digits.size() < 3 ? 3 - digits.size() : 0, u'0') + digits;
}

void copy_piece(ports::DataFiles& files, ports::FileReader& from, const Text& to,
                std::uint64_t bytes, base::Bytes& buffer) {
    const auto file = files.create(to, ports::Readers::everyone);
    while (bytes > 0) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(bytes, buffer.size()));
        if (from.read(std::span(buffer).first(wanted)) < wanted) {
            throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm",
                                        u"Plik skrócił się w czasie dzielenia");
        }
        file->write(base::ByteView(buffer).first(wanted));
        bytes -= wanted;
    }
    file->keep();
}

}  // namespace

std::vector<Text> split_file(ports::DataFiles& files, const Text& source, const Text& folder) {
    const auto file = files.open(source);
    const Text name = source.substr(source.find_last_of(u"\\/:") + 1);
    base::Bytes buffer(buffer_bytes);
    std::vector<Text> pieces;
    try {
        for (std::uint64_t left = file->size(); left > 0;) {
            const std::uint64_t bytes = std::min(left, largest_part_bytes);
            Text piece = folder + u"\\" + name + u"." + three_digits(pieces.size() + 1);
            copy_piece(files, *file, piece, bytes, buffer);
            pieces.push_back(std::move(piece));
            left -= bytes;
        }
    } catch (...) {
        for (const Text& piece : pieces) {
            try {
                files.remove(piece);
            } catch (const base::AutomationError&) {
                // What cannot be removed either has to stay.
            }
        }
        throw;
    }
    return pieces;
}

}  // namespace tavrix::ksef
