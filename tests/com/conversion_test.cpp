// What hosts send where a method wants something else: numbers as texts, arrays of anything,
// objects, nulls.

#include "tests/com/late_host.h"
#include "tests/com/probe.h"

namespace tavrix::test {
namespace {

class Conversions : public testing::Test {
  protected:
    ComPointer<IDispatch> probe = make_probe();

    base::Bytes reversed(const VARIANT& value) {
        const Outcome outcome = call(probe, u"Reverse", {value});
        EXPECT_EQ(outcome.code, S_OK);
        return bytes_of(outcome.result);
    }

    static Variant array_of(VARTYPE type, LONG first, std::vector<LONG> numbers) {
        windows::SafeArray array(
            SafeArrayCreateVector(type, first, static_cast<ULONG>(numbers.size())));
        for (const LONG number : numbers) {
            LONG index = first++;
            VARIANT element = plain(number);
            if (type != VT_VARIANT) VariantChangeType(&element, &element, 0, type);
            SafeArrayPutElement(array.get(), &index,
                                type == VT_VARIANT ? static_cast<void*>(&element) : &element.bVal);
        }
        return {std::move(array), type};
    }
};

TEST_F(Conversions, BytesComeAsAnArrayOfAnythingThatCounts) {
    const base::Bytes expected{255, 1, 0};
    EXPECT_EQ(reversed(Variant(base::Bytes{0, 1, 255}).get()), expected);
    for (const VARTYPE type : {VT_UI1, VT_VARIANT, VT_I2, VT_I4, VT_R8}) {
        EXPECT_EQ(reversed(array_of(type, 0, {0, 1, 255}).get()), expected) << type;
        EXPECT_EQ(reversed(array_of(type, 1, {0, 1, 255}).get()), expected) << type << " from 1";
    }
    EXPECT_EQ(reversed(Variant(base::Bytes{}).get()), base::Bytes{});
}

TEST_F(Conversions, BytesComeByReference) {
    const Variant array(base::Bytes{1, 2});
    SAFEARRAY* variable = array.get().parray;
    EXPECT_EQ(reversed(by_reference(&variable, VT_UI1)), (base::Bytes{2, 1}));
    Variant script(base::Bytes{1, 2});
    EXPECT_EQ(reversed(by_reference(script.address())), (base::Bytes{2, 1}));
    // An array variable that was declared and never dimensioned.
    SAFEARRAY* unset = nullptr;
    EXPECT_EQ(reversed(by_reference(&unset, VT_UI1)), base::Bytes{});
}

TEST_F(Conversions, WhatIsNoByteIsRefused) {
    EXPECT_EQ(call(probe, u"Reverse", {array_of(VT_I2, 0, {256}).get()}).code, DISP_E_OVERFLOW);
    EXPECT_EQ(call(probe, u"Reverse", {array_of(VT_VARIANT, 0, {-1}).get()}).code, DISP_E_OVERFLOW);
    EXPECT_EQ(call(probe, u"ToByte", {plain(256)}).code, DISP_E_OVERFLOW);
    for (const Variant& value :
         {Variant(u"abc"), Variant(), Variant::null(), Variant(std::int32_t{5})}) {
        const Outcome outcome = call(probe, u"Reverse", {value.get()});
        EXPECT_EQ(outcome.code, DISP_E_TYPEMISMATCH) << value.type();
        EXPECT_EQ(outcome.argument_index, 0u);
    }
    SAFEARRAYBOUND bounds[] = {{2, 0}, {2, 0}};
    const Variant square(windows::SafeArray(SafeArrayCreate(VT_UI1, 2, bounds)), VT_UI1);
    EXPECT_EQ(call(probe, u"Reverse", {square.get()}).code, DISP_E_TYPEMISMATCH);
}

TEST_F(Conversions, TextsComeFromNumbersDatesAndNothing) {
    EXPECT_EQ(bstr_of(call(probe, u"Echo", {plain(-12)}).result), u"-12");
    EXPECT_EQ(bstr_of(call(probe, u"Echo", {Variant().get()}).result), u"");
    EXPECT_EQ(call(probe, u"Echo", {Variant::null().get()}).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(call(probe, u"Echo", {Variant(ComPointer<IDispatch>()).get()}).code,
              DISP_E_TYPEMISMATCH);
}

TEST_F(Conversions, TextsComeAsAnArrayOfTextsToo) {
    const Outcome split = call(probe, u"Split", {Variant(u"a,b").get()});
    EXPECT_EQ(bstr_of(call(probe, u"Join", {split.result.get()}).result), u"a|b|");
}

TEST_F(Conversions, NumbersFollowTheCallersLocale) {
    VARIANT text = Variant(u"2,5").release();
    DISPPARAMS parameters{&text, nullptr, 1, 0};
    const LCID polish = MAKELCID(MAKELANGID(LANG_POLISH, SUBLANG_DEFAULT), SORT_DEFAULT);
    const LCID english = MAKELCID(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), SORT_DEFAULT);
    Variant result;
    const DISPID half = id_of(probe.get(), u"Half");
    EXPECT_EQ(probe->Invoke(half, IID_NULL, polish, DISPATCH_METHOD, &parameters, result.out(),
                            nullptr, nullptr),
              S_OK);
    EXPECT_EQ(result.get().dblVal, 1.25);
    // There the comma groups digits.
    EXPECT_EQ(probe->Invoke(half, IID_NULL, english, DISPATCH_METHOD, &parameters, result.out(),
                            nullptr, nullptr),
              S_OK);
    EXPECT_EQ(result.get().dblVal, 12.5);
    VariantClear(&text);
}

TEST_F(Conversions, AnObjectStandsForItsDefaultProperty) {
    const Outcome inner = get(probe, u"Inner");
    // The probe's default property wants an index, so there is no value.
    EXPECT_EQ(call(probe, u"Echo", {inner.result.get()}).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(call(probe, u"SameObject", {plain(1)}).code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(call(probe, u"SameObject", {Variant(ComPointer<IDispatch>()).get()}).result.type(),
              VT_DISPATCH);
}

TEST_F(Conversions, FieldValuesKeepTheirKind) {
    const Variant values[] = {Variant(u"tekst"),      Variant(true),
                              Variant(2.5),           Variant(std::int32_t{7}),
                              Variant::date(46340.5), Variant(base::Bytes{1, 2})};
    for (const Variant& value : values) {
        EXPECT_EQ(call(probe, u"Same", {value.get()}).result.type(), value.type());
    }
    EXPECT_EQ(call(probe, u"Same", {Variant().get()}).result.type(), VT_NULL);
    EXPECT_EQ(call(probe, u"Same", {Variant::currency(25'000).get()}).result.get().dblVal, 2.5);
    EXPECT_EQ(call(probe, u"Same", {Variant::date(46340.5).get()}).result.get().date, 46340.5);

    VARIANT wide{};
    wide.vt = VT_I8;
    wide.llVal = 5'000'000'000;
    Outcome outcome = call(probe, u"Same", {wide});
    EXPECT_EQ(outcome.result.type(), VT_DECIMAL);
    LONG64 back = 0;
    EXPECT_EQ(VarI8FromDec(&outcome.result.address()->decVal, &back), S_OK);
    EXPECT_EQ(back, wide.llVal);
}

TEST_F(Conversions, TextsOfAnySizeAndContentPassWhole) {
    base::Text text(5 * 1024 * 1024, u'ż');  // 10 MB
    text[100] = u'\0';
    text.back() = u'\xD800';
    const Variant argument(text);
    EXPECT_TRUE(bstr_of(call(probe, u"Echo", {argument.get()}).result) == text);
}

}  // namespace
}  // namespace tavrix::test
