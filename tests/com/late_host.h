#pragma once

#include <gtest/gtest.h>

#include <concepts>
#include <memory>
#include <string>
#include <vector>

#include "windows/variant.h"

namespace tavrix::test {

using windows::ComPointer;
using windows::Variant;

/// One value that a host sends: its own variable, or a literal that lives as long as this.
class Argument {
  public:
    Argument(const VARIANT& value) : value_(value) {}
    Argument(const Variant& value) : value_(value.get()) {}
    template <typename Value>
    requires std::constructible_from<Variant, Value&&> Argument(Value&& value)
        : literal_(std::make_shared<Variant>(std::forward<Value>(value))),
          value_(literal_->get()) {}

    const VARIANT& get() const noexcept { return value_; }

  private:
    std::shared_ptr<Variant> literal_;
    VARIANT value_;
};

struct NamedArgument {
    const char16_t* name;
    Argument value;
};

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

/// Calls members by name as late-bound hosts do. Arguments stand in the order of the source text.
Outcome invoke(const ComPointer<IDispatch>& object, const char16_t* name, WORD flags,
               const std::vector<Argument>& arguments = {},
               const std::vector<NamedArgument>& named = {}, LCID locale = LOCALE_USER_DEFAULT);
Outcome call(const ComPointer<IDispatch>& object, const char16_t* name,
             const std::vector<Argument>& arguments = {});

/// "long", "byte[]", "ref text" and so on: the words of PublishedClass::members.
std::string type_words(VARTYPE type);
/// A value with its exact type: "long 3", "text abc", "byte[] 0 255", "ref bool -1", "object".
std::string written(const VARIANT& value);
/// The result of a call; for a failed one what `refused` gives.
std::string written(const Outcome& outcome);
std::string refused(HRESULT code, UINT argument_index = Outcome::none);
/// What a method answers, written.
std::string answer(const ComPointer<IDispatch>& object, const char16_t* name,
                   const std::vector<Argument>& arguments = {});

/// A reference to what a host keeps in a variable of the type.
VARIANT by_reference(void* variable, int type);
/// One to a variable of a script, which holds anything.
VARIANT by_reference(Variant& variable);

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
