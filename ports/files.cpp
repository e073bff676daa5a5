#include "ports/files.h"

#include "base/error.h"

namespace tavrix::ports {

base::Bytes read_whole(DataFiles& files, base::TextView path, std::size_t most) {
    const auto file = files.open(path);
    const std::uint64_t size = file->size();
    if (size > most) {
        throw base::AutomationError(base::ErrorNumber::component_failed, u"read",
                                    u"Plik jest za duży: " + base::Text(path));
    }
    base::Bytes bytes(static_cast<std::size_t>(size));
    bytes.resize(file->read(bytes));
    return bytes;
}

}  // namespace tavrix::ports
