// What hosts send where a method wants something else: numbers as texts, arrays of anything,
// objects, nulls. And the types in which results come.

#include "tests/com/late_host.h"
#include "tests/com/probe.h"

namespace tavrix::test {
namespace {

class Conversions : public testing::Test {
  protected:
    ComPointer<IDispatch> probe = make_probe();
};

Variant array_of(VARTYPE type, LONG first, const std::vector<int>& numbers) {
    windows::SafeArray array(
        SafeArrayCreateVector(type, first, static_cast<ULONG>(numbers.size())));
    for (const int number : numbers) {
        LONG index = first++;
        Variant element(number);
        VARIANT* value = element.address();
        if (type != VT_VARIANT) VariantChangeType(value, value, 0, type);
        SafeArrayPutElement(array.get(), &index,
                            type == VT_VARIANT ? static_cast<void*>(value) : &value->bVal);
    }
    return {std::move(array), type};
}

TEST_F(Conversions, BytesComeAsAnArrayOfAnythingThatCounts) {
    for (const VARTYPE type : {VT_UI1, VT_VARIANT, VT_I2, VT_I4, VT_R8}) {
        for (const LONG first : {0, 1}) {
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
    } rows[] = {{base::Bytes{}, "byte[]"},
                {by_reference(&variable, VT_ARRAY | VT_UI1), "byte[] 2 1"},
                {by_reference(array), "byte[] 2 1"},
                {by_reference(&unset, VT_ARRAY | VT_UI1), "byte[]"},
                {array_of(VT_I2, 0, {256}), refused(DISP_E_OVERFLOW, 0)},
                {array_of(VT_VARIANT, 0, {-1}), refused(DISP_E_OVERFLOW, 0)},
                {u"abc", refused(DISP_E_TYPEMISMATCH, 0)},
                {Variant::null(), refused(DISP_E_TYPEMISMATCH, 0)},
                {square, refused(DISP_E_TYPEMISMATCH, 0)}};
    for (const auto& row : rows) EXPECT_EQ(answer(probe, u"Reverse", {row.bytes}), row.expected);
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
