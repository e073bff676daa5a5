// What hosts send where a method wants something else: numbers as texts, arrays of anything,
// objects, nulls. And the types in which results come.

#include <climits>
#include <cstring>

#include "tests/com/late_host.h"
#include "tests/com/probe.h"

namespace tavrix::test {
namespace {

using Conversions = ProbeTest;

// Filled in place: the system's own functions refuse the highest bounds.
Variant array_of(VARTYPE type, LONG first, const std::vector<int>& numbers) {
    windows::SafeArray array(
        SafeArrayCreateVector(type, first, static_cast<ULONG>(numbers.size())));
    const windows::SafeArrayAccess access(array.get());
    const std::size_t size = SafeArrayGetElemsize(array.get());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        Variant element(numbers[i]);
        VARIANT* value = element.address();
        if (type != VT_VARIANT) VariantChangeType(value, value, 0, type);
        const bool whole = type == VT_VARIANT || type == VT_DECIMAL;
        const void* content = whole ? static_cast<void*>(value) : &value->bVal;
        std::memcpy(static_cast<char*>(access.data()) + i * size, content, size);
        static_cast<void>(element.release());
    }
    return {std::move(array), type};
}

TEST_F(Conversions, BytesComeAsAnArrayOfAnythingThatCounts) {
    for (const VARTYPE type : {VT_UI1, VT_VARIANT, VT_I2, VT_I4, VT_R8, VT_I8, VT_UI2, VT_R4, VT_CY,
                               VT_BSTR, VT_DECIMAL, VT_UINT}) {
        for (const LONG first : {0L, 1L, -3L, LONG_MIN, LONG_MAX - 2, LONG_MAX - 1}) {
            const Variant array = array_of(type, first, {0, 1, 255});
            EXPECT_EQ(answer(probe, u"Reverse", {array}), "byte[] 255 1 0")
                << type << " from " << first;
        }
    }
    Variant array(base::Bytes{1, 2});
    SAFEARRAY* variable = array.get().parray;
    // Declared and never dimensioned.
    SAFEARRAY* unset = nullptr;
    SAFEARRAYBOUND bounds[] = {{2, 0}, {2, 0}};
    const Variant square(windows::SafeArray(SafeArrayCreate(VT_UI1, 2, bounds)), VT_UI1);
    const struct {
        Argument bytes;
        std::string expected;
    } rows[] = {
        {base::Bytes{}, "byte[]"},
        {by_reference(&variable, VT_ARRAY | VT_UI1), "byte[] 2 1"},
        {by_reference(array), "byte[] 2 1"},
        {by_reference(&unset, VT_ARRAY | VT_UI1), "byte[]"},
        {array_of(VT_I2, 0, {256}), refused(DISP_E_OVERFLOW, 0)},
        {array_of(VT_VARIANT, 0, {-1}), refused(DISP_E_OVERFLOW, 0)},
        {u"abc", refused(DISP_E_TYPEMISMATCH, 0)},
        {Variant::null(), refused(DISP_E_TYPEMISMATCH, 0)},
        {square, refused(DISP_E_TYPEMISMATCH, 0)},
        {array_of(VT_DECIMAL, 0, {256}), refused(DISP_E_OVERFLOW, 0)},
        {array_of(VT_ERROR, 0, {1}), refused(DISP_E_TYPEMISMATCH, 0)},
        {array_of(VT_UNKNOWN, 0, {}), "byte[]"},
        // Says bytes, and has larger ones.
        {Variant(windows::SafeArray(SafeArrayCreateVector(VT_I4, 0, 2)), VT_UI1), "byte[] 0 0"}};
    for (const auto& row : rows) EXPECT_EQ(answer(probe, u"Reverse", {row.bytes}), row.expected);

    // As VB6 passes an array of a user-defined type, with only the type's description missing.
    SAFEARRAY* descriptor = nullptr;
    ASSERT_EQ(SafeArrayAllocDescriptorEx(VT_RECORD, 1, &descriptor), S_OK);
    descriptor->cbElements = 12;
    descriptor->rgsabound[0] = {2, 0};
    ASSERT_EQ(SafeArrayAllocData(descriptor), S_OK);
    const Variant records(windows::SafeArray(descriptor), VT_RECORD);
    EXPECT_EQ(answer(probe, u"Reverse", {records}), refused(DISP_E_TYPEMISMATCH, 0));
    EXPECT_EQ(answer(probe, u"Join", {records}), refused(DISP_E_TYPEMISMATCH, 0));
    descriptor->fFeatures = 0;  // records that nobody describes cannot be cleared
}

TEST_F(Conversions, AnArrayThatIsLockedOrOfAFixedSizeStaysTheHostsOwn) {
    const std::string locked = refused(DISP_E_ARRAYISLOCKED, 1);
    const struct {
        USHORT features;
        ULONG locks;
        int count;
        std::string expected;
        std::string left;
    } rows[] = {{0, 0, 3, "empty", "x|x|x|"},
                {0, 1, 3, locked, "a|b|"},
                {FADF_FIXEDSIZE, 0, 2, "empty", "x|x|"},
                {FADF_FIXEDSIZE, 0, 3, locked, "a|b|"},
                {FADF_STATIC, 0, 1, locked, "a|b|"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.left + std::to_string(row.features));
        Variant array = std::move(call(probe, u"Split", {u"a,b"}).result);
        SAFEARRAY*& variable = array.address()->parray;
        variable->fFeatures |= row.features;
        variable->cLocks = row.locks;
        std::vector<VARIANT> hosts = {by_reference(&variable, VT_ARRAY | VT_BSTR)};
        // A script's variable takes a new array instead of a fixed one.
        if (row.features == 0) hosts.push_back(by_reference(array));
        for (const VARIANT& host : hosts) {
            EXPECT_EQ(answer(probe, u"Fill", {host, row.count}), row.expected);
            EXPECT_EQ(answer(probe, u"Join", {array}), "text " + row.left);
            EXPECT_EQ(variable->cLocks, row.locks);
        }
        variable->fFeatures &= static_cast<USHORT>(~row.features);
        variable->cLocks = 0;
    }
}

TEST_F(Conversions, ArgumentsAndResultsHaveTheTypesOfTheTable) {
    const ComPointer<IDispatch> nothing;
    VARIANT wide{};
    wide.vt = VT_I8;
    wide.llVal = 5'000'000'000;
    const std::string mismatch = refused(DISP_E_TYPEMISMATCH, 0);
    const Variant texts = std::move(call(probe, u"Split", {u"a,b"}).result);
    EXPECT_EQ(texts.type(), VT_ARRAY | VT_BSTR);
    const struct {
        const char16_t* method;
        Argument argument;
        std::string expected;
    } rows[] = {
        {u"Echo", -12, "text -12"},
        {u"Echo", Variant(), "text "},
        {u"Echo", Variant::null(), mismatch},
        {u"Echo", nothing, mismatch},
        // Its default property wants an index, so there is no value.
        {u"Echo", probe, mismatch},
        {u"Join", texts, "text a|b|"},
        {u"ToByte", 255, "byte 255"},
        {u"ToByte", 256, refused(DISP_E_OVERFLOW, 0)},
        {u"Half", u"5", "double 2.5"},
        {u"Not", 0, "bool -1"},
        {u"SameObject", nothing, "object"},
        {u"SameObject", 1, mismatch},
        // The values of a database's fields keep their kind.
        {u"Same", u"tekst", "text tekst"},
        {u"Same", true, "bool -1"},
        {u"Same", 2.5, "double 2.5"},
        {u"Same", 7, "long 7"},
        {u"Same", Variant::date(46340.5), "date 11/14/2026 12:00:00"},
        {u"Same", base::Bytes{1, 2}, "byte[] 1 2"},
        {u"Same", Variant(), "null"},
        {u"Same", Variant::currency(25'000), "double 2.5"},
        {u"Same", wide, "decimal 5000000000"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(answer(probe, row.method, {row.argument}), row.expected)
            << base::to_utf8(row.method) << " " << written(row.argument.get());
    }
}

TEST_F(Conversions, NumbersFollowTheCallersLocale) {
    const auto half = [&](LCID locale) {
        return written(invoke(probe, u"Half", DISPATCH_METHOD, {u"2,5"}, {}, locale));
    };
    EXPECT_EQ(half(MAKELCID(MAKELANGID(LANG_POLISH, SUBLANG_DEFAULT), SORT_DEFAULT)),
              "double 1.25");
    // There the comma groups digits.
    EXPECT_EQ(half(MAKELCID(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), SORT_DEFAULT)),
              "double 12.5");
}

TEST_F(Conversions, TextsOfAnySizeAndContentPassWhole) {
    base::Text text(5 * 1024 * 1024, u'ż');  // 10 MB
    text[100] = u'\0';
    text.back() = u'\xD800';
    const Outcome outcome = call(probe, u"Echo", {text});
    ASSERT_EQ(outcome.result.type(), VT_BSTR);
    EXPECT_TRUE(windows::view_of(outcome.result.get().bstrVal) == text);
}

}  // namespace
}  // namespace tavrix::test
