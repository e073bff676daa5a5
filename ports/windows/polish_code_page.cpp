#include "ports/windows/polish_code_page.h"

#include "ports/portable/windows_1250.h"
#include "ports/windows/adapters.h"

namespace tavrix::ports {
namespace {

class PolishCodePage final : public Windows1250 {
  public:
    std::optional<base::Text> decode(std::uint32_t code_page, base::ByteView bytes) const override {
        return code_page == 1250 ? to_text(bytes) : system_->decode(code_page, bytes);
    }

  private:
    std::unique_ptr<CodePage> system_ = make_windows_code_page();
};

}  // namespace

std::unique_ptr<CodePage> make_polish_code_page() {
    return std::make_unique<PolishCodePage>();
}

}  // namespace tavrix::ports
