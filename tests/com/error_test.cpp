// What escapes from a method, as the host sees it.

#include "tests/com/late_host.h"
#include "tests/com/probe.h"

namespace tavrix::test {
namespace {

TEST(Errors, ReachTheHostWithNumberSourceAndDescription) {
    const auto probe = make_probe();
    Variant variable(u"before");
    const struct {
        int how;
        HRESULT code;
        std::uint32_t number;
        const char16_t* source;
        const char16_t* description;
    } failures[] = {
        {0, DISP_E_EXCEPTION, 0x800A0009, u"Probe.Fail", u"Zła liczba"},
        // Lack of memory is no exception.
        {1, E_OUTOFMEMORY, 0, u"", u""},
        {2, DISP_E_EXCEPTION, 0x80040200, u"Probe", u"broken"},
    };
    for (const auto& failure : failures) {
        SetErrorInfo(0, nullptr);
        const Outcome outcome = call(probe, u"Fail", {failure.how, by_reference(variable)});
        EXPECT_EQ(written(outcome), refused(failure.code));
        EXPECT_EQ(static_cast<std::uint32_t>(outcome.number), failure.number);
        EXPECT_EQ(outcome.source, failure.source);
        EXPECT_EQ(outcome.description, failure.description);
        ComPointer<IErrorInfo> info;
        EXPECT_EQ(GetErrorInfo(0, info.out()), failure.number != 0 ? S_OK : S_FALSE);
        windows::Bstr description;
        if (info) info->GetDescription(description.out());
        EXPECT_EQ(windows::view_of(description.get()), failure.description);
    }
    EXPECT_EQ(written(variable.get()), "text changed") << "as a host's own procedure would do it";
    // A host that wants no details gets the code.
    VARIANT arguments[] = {by_reference(variable), {}};
    DISPPARAMS parameters{arguments, nullptr, 2, 0};
    EXPECT_EQ(
        probe->Invoke(14, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr),
        DISP_E_EXCEPTION);

    const auto support = probe.query<ISupportErrorInfo>();
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IDispatch), S_OK);
    EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IStream), S_FALSE);
}

}  // namespace
}  // namespace tavrix::test
