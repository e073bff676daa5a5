#include "ports/windows/adapters.h"
#include "windows/late_bound.h"
#include "windows/variant_value.h"

namespace tavrix::ports {
namespace {

using windows::LateBound;

constexpr std::int32_t for_reading = 1;

class ScriptingTextFiles final : public TextFiles {
  public:
    base::Text read_all(base::TextView path) override {
        const auto file_system = LateBound::create(u"Scripting.FileSystemObject");
        const LateBound stream(
            windows::object_of(file_system.call(u"OpenTextFile", path, for_reading).get()));
        base::Text text(windows::view_of(stream.call(u"ReadAll").get().bstrVal));
        stream.call(u"Close");
        return text;
    }
};

}  // namespace

std::unique_ptr<TextFiles> make_windows_text_files() {
    return std::make_unique<ScriptingTextFiles>();
}

}  // namespace tavrix::ports
