#pragma once

#include <span>
#include <vector>

namespace tavrix::test {

/// One public class as its hosts know it, written down apart from the library's own tables.
struct PublishedClass {
    const char16_t* name;
    /// A line for each member; the first has the number 1, the next 2, and so on:
    /// "long name(text first, ref text second)" is a method and its result, `void` when it has
    /// none; "property text name" is read and written, "readonly text name" only read.
    ///
    /// An argument marked `ref` comes back to the host's variable.
    ///
    /// `text` is a BSTR, `bool` a VARIANT_BOOL, `byte` 8 bits without sign, `integer` 16 and `long`
    /// 32 bits with one, `currency` 64 bits with four decimals; `double`, `object` and `variant`
    /// are themselves; `[]` is a SAFEARRAY. A class's name is an object of the class.
    std::vector<const char16_t*> members;
    /// Names of the events it raises, numbered in the same way. Their arguments are nobody's
    /// promise.
    std::vector<const char16_t*> events = {};
};

/// Every class that a host can create.
std::span<const PublishedClass> published_classes();

}  // namespace tavrix::test
