#include "com/enumerator.h"

#include <algorithm>

#include "com/error_bridge.h"

namespace tavrix::com {
namespace {

class VariantEnumerator final : public Unknown<IEnumVARIANT> {
  public:
    VariantEnumerator(std::size_t count, std::function<windows::Variant(std::size_t)> element,
                      std::size_t next = 0)
        : count_(count), next_(next), element_(std::move(element)) {}

    HRESULT STDMETHODCALLTYPE Next(ULONG wanted, VARIANT* values,
                                   ULONG* fetched) noexcept override {
        ULONG given = 0;
        try {
            for (; given < wanted && next_ < count_; ++given) {
                values[given] = element_(next_++).release();
            }
        } catch (...) {
            // The host gets what came before the failure.
            report_current_exception(u"For Each");
        }
        if (fetched != nullptr) *fetched = given;
        return given == wanted ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) noexcept override {
        const std::size_t skipped = std::min<std::size_t>(count, count_ - next_);
        next_ += skipped;
        return skipped == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Reset() noexcept override {
        next_ = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** copy) noexcept override {
        try {
            *copy = new VariantEnumerator(count_, element_, next_);
            return S_OK;
        } catch (...) {
            return E_OUTOFMEMORY;
        }
    }

  private:
    std::size_t count_;
    std::size_t next_;
    std::function<windows::Variant(std::size_t)> element_;
};

}  // namespace

windows::ComPointer<IUnknown> make_enumerator(
    std::size_t count, std::function<windows::Variant(std::size_t)> element) {
    return windows::ComPointer<IUnknown>::adopt(new VariantEnumerator(count, std::move(element)));
}

}  // namespace tavrix::com
