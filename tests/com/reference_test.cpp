// By-reference arguments: every form in which hosts send a variable, and what comes back into it.

#include "tests/com/late_host.h"
#include "tests/com/probe.h"

namespace tavrix::test {
namespace {

class References : public testing::Test {
  protected:
    ComPointer<IDispatch> probe = make_probe();
};

TEST_F(References, ATextVariableInEachForm) {
    BSTR text = windows::make_bstr(u"abcd").release();
    EXPECT_EQ(call(probe, u"Chop", {by_reference(&text)}).result.get().lVal, 3);
    EXPECT_EQ(windows::view_of(text), u"abc");
    VARIANT inner = by_reference(&text);
    EXPECT_EQ(call(probe, u"Chop", {by_reference(&inner)}).code, S_OK);
    EXPECT_EQ(windows::view_of(text), u"ab") << "a variable that is a reference itself";
    SysFreeString(text);
    BSTR never_set = nullptr;
    EXPECT_EQ(call(probe, u"Chop", {by_reference(&never_set)}).result.get().lVal, 0);
    EXPECT_EQ(never_set, nullptr) << "an argument that the method left alone is left alone";
    Variant script(u"abc");
    EXPECT_EQ(call(probe, u"Chop", {by_reference(script.address())}).result.get().lVal, 2);
    EXPECT_EQ(bstr_of(script), u"ab");
    // A number becomes the text that the method made of it.
    Variant number(std::int32_t{1234});
    EXPECT_EQ(call(probe, u"Chop", {by_reference(number.address())}).result.get().lVal, 3);
    EXPECT_EQ(bstr_of(number), u"123");
}

TEST_F(References, NothingComesBackIntoAPlainValue) {
    Variant text(u"abc");
    DISPPARAMS parameters{text.address(), nullptr, 1, 0};
    Variant length;
    EXPECT_EQ(probe->Invoke(id_of(probe.get(), u"Chop"), IID_NULL, 0, DISPATCH_METHOD, &parameters,
                            length.out(), nullptr, nullptr),
              S_OK);
    EXPECT_EQ(length.get().lVal, 2);
    EXPECT_EQ(bstr_of(text), u"abc");
}

TEST_F(References, ATypedVariableKeepsItsType) {
    LONG number = 1234;
    EXPECT_EQ(call(probe, u"Chop", {by_reference(&number)}).code, S_OK);
    EXPECT_EQ(number, 123);
    SHORT narrow = 7;
    LONG wide = 70000;
    const Outcome outcome = call(probe, u"Swap", {by_reference(&narrow), by_reference(&wide)});
    EXPECT_EQ(outcome.code, DISP_E_OVERFLOW);
    EXPECT_EQ(outcome.argument_index, 0u);
    wide = 9;
    EXPECT_EQ(call(probe, u"Swap", {by_reference(&narrow), by_reference(&wide)}).code, S_OK);
    EXPECT_EQ(narrow, 9);
    EXPECT_EQ(wide, 7);
}

TEST_F(References, OutputsThatMayBeLeftOut) {
    const Variant text(u"abc");
    Variant length;
    EXPECT_EQ(call(probe, u"Count", {text.get(), by_reference(length.address())}).code, S_OK);
    EXPECT_EQ(length.type(), VT_I4);
    EXPECT_EQ(length.get().lVal, 3);
    EXPECT_EQ(call(probe, u"Count", {text.get()}).code, S_OK);
    EXPECT_EQ(call(probe, u"Count", {text.get(), Variant::missing().get()}).code, S_OK);
}

TEST_F(References, AFailedCallChangesNothing) {
    Variant variable(u"before");
    EXPECT_EQ(call(probe, u"Fail", {plain(0), by_reference(variable.address())}).code,
              DISP_E_EXCEPTION);
    EXPECT_EQ(bstr_of(variable), u"before");
}

}  // namespace
}  // namespace tavrix::test
