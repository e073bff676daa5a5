#pragma once

#include "com/unknown.h"
#include "tests/com/late_host.h"

namespace tavrix::test {

/// A host's grid by hand, as strict as some are: its members answer only to whoever asks for a
/// property and a method at once, and it has no other members.
class LateGrid final : public com::Unknown<IDispatch> {
  public:
    explicit LateGrid(std::vector<std::vector<base::Text>> cells) : cells_(std::move(cells)) {}

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID,
                                            DISPID* ids) noexcept override {
        constexpr base::TextView members[] = {u"Rows", u"Cols", u"TextMatrix"};
        ++lookups;
        for (int i = 0; i < 3; ++i) {
            if (windows::wide(members[i].data()) == std::wstring_view(names[0])) {
                ids[0] = i;
                return S_OK;
            }
        }
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO*, UINT*) noexcept override {
        if (flags != (DISPATCH_METHOD | DISPATCH_PROPERTYGET)) return DISP_E_MEMBERNOTFOUND;
        const auto size = [](const auto& list) { return static_cast<std::int32_t>(list.size()); };
        if (id == 0) *result = Variant(size(cells_)).release();
        if (id == 1) *result = Variant(size(cells_.at(0))).release();
        if (id == 2) {
            const auto column = static_cast<std::size_t>(parameters->rgvarg[0].lVal);
            const auto row = static_cast<std::size_t>(parameters->rgvarg[1].lVal);
            *result = Variant(cells_.at(row).at(column)).release();
        }
        return S_OK;
    }

    int lookups = 0;

  private:
    std::vector<std::vector<base::Text>> cells_;
};

}  // namespace tavrix::test
