#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "windows/variant.h"

namespace tavrix::test {

using windows::ComPointer;
using windows::Variant;

/// What a host sees of one call.
struct Outcome {
    HRESULT code = S_OK;
    Variant result;
    SCODE number = 0;
    base::Text source;
    base::Text description;
    /// The argument's place in the reversed list; `none` when Invoke left it alone.
    static constexpr UINT none = 0xFFFF;
    UINT argument_index = none;
};

struct NamedArgument {
    const char16_t* name;
    VARIANT value;
};

/// Calls members by name as late-bound hosts do. Arguments stand in the order of the source text.
DISPID id_of(IDispatch* object, const char16_t* name);
Outcome invoke(IDispatch* object, const char16_t* name, WORD flags,
               std::vector<VARIANT> arguments = {}, const std::vector<NamedArgument>& named = {});
Outcome call(const ComPointer<IDispatch>& object, const char16_t* name,
             std::vector<VARIANT> arguments = {});
Outcome get(const ComPointer<IDispatch>& object, const char16_t* name,
            std::vector<VARIANT> arguments = {});
Outcome put(const ComPointer<IDispatch>& object, const char16_t* name,
            std::vector<VARIANT> arguments);

/// The text of a result that must be exactly a BSTR.
base::Text bstr_of(const Variant& value);
/// The bytes of a result that must be exactly a zero-based array of them.
base::Bytes bytes_of(const Variant& value);

// References to what a host keeps in variables.
VARIANT reference(void* variable, int type);
inline VARIANT by_reference(BSTR* text) {
    return reference(text, VT_BSTR);
}
inline VARIANT by_reference(LONG* number) {
    return reference(number, VT_I4);
}
inline VARIANT by_reference(SHORT* number) {
    return reference(number, VT_I2);
}
inline VARIANT by_reference(SAFEARRAY** array, VARTYPE element_type) {
    return reference(array, VT_ARRAY | element_type);
}
inline VARIANT by_reference(VARIANT* variable) {
    return reference(variable, VT_VARIANT);
}
VARIANT plain(LONG number);

/// The path of a file that stands beside the test program.
base::Text beside_program(base::TextView file);

/// A new object of the class registered as `prog_id`; the test fails when there is none.
ComPointer<IDispatch> create(const char16_t* prog_id);

/// One DLL loaded by hand, as setup programs and the system do.
class LoadedDll {
  public:
    explicit LoadedDll(base::TextView file);
    ~LoadedDll();
    LoadedDll(const LoadedDll&) = delete;
    LoadedDll& operator=(const LoadedDll&) = delete;

    template <typename Function>
    Function* function(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }

  private:
    HMODULE module_;
};

}  // namespace tavrix::test
