// Names, argument lists and results, against an object that has every kind of argument.

#include "com/signature.h"
#include "tests/com/late_host.h"
#include "tests/com/probe.h"

namespace tavrix::test {
namespace {

using Dispatch = ProbeTest;

// As hosts see names: `members` refuses such rows when it compiles them.
constexpr bool clash(const std::array<base::TextView, 3>& names) {
    std::array<com::Member, 3> rows;
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i].name = names[i];
    return com::has_twins(std::span<const com::Member>(rows));
}
static_assert(clash({u"Treść", u"x", u"TREŚĆ"}) && clash({u"y", u"x1", u"X1"}));
static_assert(!clash({u"Treść", u"Tresc", u"Treśćx"}));

TEST_F(Dispatch, NamesAreFoundWhateverTheirLetterCaseAndNoOthers) {
    const struct {
        std::vector<const wchar_t*> names;
        HRESULT code;
        std::vector<DISPID> ids;
    } requests[] = {
        {{L"potĘGA", L"WYKŁADNIK", L"podstawa"}, S_OK, {12, 1, 0}},
        // Every unknown one is marked.
        {{L"Potęga", L"nie ma", L"Podstawa"}, DISP_E_UNKNOWNNAME, {12, DISPID_UNKNOWN, 0}},
        {{L"Potega", L"Podstawa"}, DISP_E_UNKNOWNNAME, {DISPID_UNKNOWN, DISPID_UNKNOWN}}};
    for (const auto& request : requests) {
        auto* names = const_cast<wchar_t**>(request.names.data());
        std::vector<DISPID> ids(request.names.size(), 12345);
        const auto count = static_cast<UINT>(ids.size());
        EXPECT_EQ(probe->GetIDsOfNames(IID_NULL, names, count, 0, ids.data()), request.code);
        EXPECT_EQ(ids, request.ids);
        EXPECT_EQ(probe->GetIDsOfNames(IID_IUnknown, names, count, 0, ids.data()),
                  DISP_E_UNKNOWNINTERFACE);
    }
}

TEST_F(Dispatch, ArgumentsAreCountedPlacedAndNamed) {
    const Variant missing = Variant::missing();
    const struct {
        std::vector<Argument> arguments;
        std::vector<NamedArgument> named;
        std::string expected;
    } powers[] = {
        {{3}, {}, "long 9"},
        {{3, missing}, {}, "long 9"},
        {{3, 3}, {}, "long 27"},
        {{}, {{u"wykładnik", 3}, {u"podstawa", 2}}, "long 8"},
        {{5}, {{u"Wykładnik", 1}}, "long 5"},
        {{}, {}, refused(DISP_E_BADPARAMCOUNT)},
        {{2, 3, 4}, {}, refused(DISP_E_BADPARAMCOUNT)},
        {{missing, 3}, {}, refused(DISP_E_PARAMNOTOPTIONAL, 1)},
        {{5}, {{u"Podstawa", 1}}, refused(DISP_E_PARAMNOTFOUND, 0)},
        {{u"x", u"x"}, {}, refused(DISP_E_TYPEMISMATCH, 1)},
    };
    for (const auto& power : powers) {
        EXPECT_EQ(written(invoke(probe, u"Potęga", DISPATCH_METHOD, power.arguments, power.named)),
                  power.expected);
    }
}

TEST_F(Dispatch, PlacesMembersAndInterfacesThatThereAreNotAreRefused) {
    VARIANT values[2] = {};
    DISPID place = 2;
    DISPPARAMS parameters{values, &place, 2, 1};
    UINT index = Outcome::none;
    const auto refusal_of = [&](DISPID member, REFIID reserved) {
        return probe->Invoke(member, reserved, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr,
                             &index);
    };
    EXPECT_EQ(refusal_of(1, IID_IUnknown), DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(refusal_of(99, IID_NULL), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(refusal_of(12, IID_NULL), DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(index, 0u);
}

TEST_F(Dispatch, PropertiesAreReadAndWritten) {
    // Script hosts do not say whether they read or call.
    const WORD read = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
    const std::string no_member = refused(DISP_E_MEMBERNOTFOUND);
    const struct {
        const char16_t* name;
        WORD flags;
        std::vector<Argument> arguments;
        std::string expected;
    } uses[] = {
        {u"LABEL", DISPATCH_PROPERTYPUT, {u"Zażółć"}, "empty"},
        {u"label", DISPATCH_PROPERTYGET, {}, "text Zażółć"},
        {u"Label", read, {}, "text Zażółć"},
        {u"Label", DISPATCH_PROPERTYPUTREF, {1}, no_member},
        {u"Echo", DISPATCH_PROPERTYPUT, {1}, no_member},
        {u"NieMa", read, {}, refused(DISP_E_UNKNOWNNAME)},
        {u"Slot", DISPATCH_PROPERTYPUT, {2, u"two"}, "empty"},
        {u"Slot", DISPATCH_PROPERTYGET, {2}, "text two"},
        // Arguments that an object does not take go to its default member.
        {u"Inner", DISPATCH_PROPERTYGET, {1}, "text inner one"},
    };
    for (const auto& use : uses) {
        EXPECT_EQ(written(invoke(probe, use.name, use.flags, use.arguments)), use.expected)
            << base::to_utf8(use.name);
    }
}

TEST_F(Dispatch, ReferencesAreCounted) {
    {
        const Outcome outcome = call(probe, u"SameObject", {probe});
        ASSERT_EQ(outcome.result.type(), VT_DISPATCH);
        EXPECT_EQ(outcome.result.get().pdispVal, probe.get());
    }
    EXPECT_EQ(probe->AddRef(), 2u);
    EXPECT_EQ(probe->Release(), 1u);
    EXPECT_FALSE(probe.query<IStream>());
}

}  // namespace
}  // namespace tavrix::test
