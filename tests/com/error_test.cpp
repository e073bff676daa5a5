// What escapes from a method, as the host sees it.

#include "tests/com/late_host.h"
#include "tests/com/probe.h"

namespace tavrix::test {
namespace {

class Errors : public testing::Test {
  protected:
    ComPointer<IDispatch> probe = make_probe();
    Variant variable{u""};
    Outcome fail(LONG how) {
        return call(probe, u"Fail", {plain(how), by_reference(variable.address())});
    }
};

TEST_F(Errors, AnAutomationErrorCarriesNumberSourceAndDescription) {
    SetErrorInfo(0, nullptr);
    const Outcome outcome = fail(0);
    EXPECT_EQ(outcome.code, DISP_E_EXCEPTION);
    EXPECT_EQ(outcome.number, static_cast<SCODE>(0x800A0009));
    EXPECT_EQ(outcome.source, u"Probe.Fail");
    EXPECT_EQ(outcome.description, u"Zła liczba");
    EXPECT_EQ(outcome.argument_index, Outcome::none);
    EXPECT_EQ(outcome.result.type(), VT_EMPTY);

    ComPointer<IErrorInfo> info;
    ASSERT_EQ(GetErrorInfo(0, info.out()), S_OK);
    windows::Bstr description;
    info->GetDescription(description.out());
    EXPECT_EQ(windows::view_of(description.get()), u"Zła liczba");
    EXPECT_EQ(probe.query<ISupportErrorInfo>()->InterfaceSupportsErrorInfo(IID_IDispatch), S_OK);
    EXPECT_EQ(probe.query<ISupportErrorInfo>()->InterfaceSupportsErrorInfo(IID_IStream), S_FALSE);
}

TEST_F(Errors, AHostThatWantsNoDetailsGetsTheCode) {
    VARIANT arguments[] = {by_reference(variable.address()), plain(0)};
    DISPPARAMS parameters{arguments, nullptr, 2, 0};
    EXPECT_EQ(probe->Invoke(id_of(probe.get(), u"Fail"), IID_NULL, 0, DISPATCH_METHOD, &parameters,
                            nullptr, nullptr, nullptr),
              DISP_E_EXCEPTION);
}

TEST_F(Errors, LackOfMemoryIsNoException) {
    EXPECT_EQ(fail(1).code, E_OUTOFMEMORY);
}

TEST_F(Errors, AnythingElseIsTheComponentsError) {
    const Outcome known = fail(2);
    EXPECT_EQ(known.code, DISP_E_EXCEPTION);
    EXPECT_EQ(known.number, static_cast<SCODE>(0x80040200));
    EXPECT_EQ(known.source, u"Probe");
    EXPECT_EQ(known.description, u"broken");
    const Outcome unknown = fail(3);
    EXPECT_EQ(unknown.code, DISP_E_EXCEPTION);
    EXPECT_EQ(unknown.number, static_cast<SCODE>(0x80040200));
    EXPECT_FALSE(unknown.description.empty());
}

}  // namespace
}  // namespace tavrix::test
