// By-reference arguments: every form in which hosts send a variable, and what comes back into it.

#include "tests/com/late_host.h"
#include "tests/com/probe.h"

namespace tavrix::test {
namespace {

using References = ProbeTest;

TEST_F(References, AVariableGetsItsNewValueInTheTypeItHas) {
    BSTR text = windows::make_bstr(u"abcd").release();
    VARIANT in_a_variant = by_reference(&text, VT_BSTR);
    BSTR never_set = nullptr;
    Variant of_a_script(u"abc");
    // Becomes the text that the method made of it.
    Variant with_a_number(std::int32_t{1234});
    LONG number = 1234;
    const struct {
        VARIANT argument;
        const char* answer;
        const char* left;
    } chops[] = {
        {by_reference(&text, VT_BSTR), "long 3", "ref text abc"},
        {by_reference(&in_a_variant, VT_VARIANT), "long 2", "ref text ab"},
        {by_reference(of_a_script), "long 2", "ref text ab"},
        {by_reference(with_a_number), "long 3", "ref text 123"},
        {by_reference(&number, VT_I4), "long 3", "ref long 123"},
    };
    for (const auto& chop : chops) {
        EXPECT_EQ(answer(probe, u"Chop", {chop.argument}), chop.answer);
        EXPECT_EQ(written(chop.argument), chop.left);
    }
    SysFreeString(text);
    EXPECT_EQ(answer(probe, u"Chop", {u"a plain value"}), "long 12");
    EXPECT_EQ(answer(probe, u"Chop", {by_reference(&never_set, VT_BSTR)}), "long 0");
    EXPECT_EQ(never_set, nullptr) << "an argument that the method left alone is left alone";
}

TEST_F(References, EachVariableGetsItsOwnValue) {
    SHORT narrow = 7;
    LONG wide = 70000;
    const std::vector<Argument> both = {by_reference(&narrow, VT_I2), by_reference(&wide, VT_I4)};
    EXPECT_EQ(answer(probe, u"Swap", both), refused(DISP_E_OVERFLOW, 0));
    wide = 9;
    EXPECT_EQ(answer(probe, u"Swap", both), "empty");
    EXPECT_EQ(narrow, 9);
    EXPECT_EQ(wide, 7);
}

TEST_F(References, OutputsMayBeLeftOut) {
    Variant length;
    const Variant missing = Variant::missing();
    EXPECT_EQ(answer(probe, u"Count", {u"abc", by_reference(length)}), "empty");
    EXPECT_EQ(written(length.get()), "long 3");
    EXPECT_EQ(answer(probe, u"Count", {u"abc"}), "empty");
    EXPECT_EQ(answer(probe, u"Count", {u"abc", missing}), "empty");
}

}  // namespace
}  // namespace tavrix::test
