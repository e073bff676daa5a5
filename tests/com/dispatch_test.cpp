// Names, argument lists and results, against an object that has every kind of argument.

#include "tests/com/late_host.h"
#include "tests/com/probe.h"

namespace tavrix::test {
namespace {

class Dispatch : public testing::Test {
  protected:
    ComPointer<IDispatch> probe = make_probe();
};

std::vector<DISPID> ids_of(IDispatch* object, std::vector<const char16_t*> names,
                           HRESULT expected) {
    std::vector<LPOLESTR> wide_names;
    for (const char16_t* name : names)
        wide_names.push_back(const_cast<wchar_t*>(windows::wide(name)));
    std::vector<DISPID> ids(names.size(), 12345);
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, wide_names.data(), static_cast<UINT>(names.size()),
                                    LOCALE_USER_DEFAULT, ids.data()),
              expected);
    return ids;
}

TEST_F(Dispatch, NamesAreFoundWhateverTheirLetterCaseAndNoOthers) {
    EXPECT_EQ(ids_of(probe.get(), {u"potĘGA", u"WYKŁADNIK", u"podstawa"}, S_OK),
              (std::vector<DISPID>{12, 1, 0}));
    // Every unknown one is marked.
    EXPECT_EQ(ids_of(probe.get(), {u"Potęga", u"nie ma", u"Podstawa"}, DISP_E_UNKNOWNNAME),
              (std::vector<DISPID>{12, DISPID_UNKNOWN, 0}));
    EXPECT_EQ(ids_of(probe.get(), {u"Potega", u"Podstawa"}, DISP_E_UNKNOWNNAME),
              (std::vector<DISPID>{DISPID_UNKNOWN, DISPID_UNKNOWN}));
}

TEST_F(Dispatch, ReservedInterfaceIdMustBeNull) {
    DISPID id = 0;
    auto* name = const_cast<wchar_t*>(L"Echo");
    EXPECT_EQ(probe->GetIDsOfNames(IID_IUnknown, &name, 1, 0, &id), DISP_E_UNKNOWNINTERFACE);
    DISPPARAMS none{};
    EXPECT_EQ(probe->Invoke(1, IID_IUnknown, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
              DISP_E_UNKNOWNINTERFACE);
}

TEST_F(Dispatch, ResultsHaveTheirExactTypes) {
    const Variant text(u"5");
    EXPECT_EQ(call(probe, u"Echo", {text.get()}).result.type(), VT_BSTR);
    EXPECT_EQ(call(probe, u"Potęga", {plain(3)}).result.type(), VT_I4);
    EXPECT_EQ(call(probe, u"ToByte", {plain(255)}).result.type(), VT_UI1);
    EXPECT_EQ(call(probe, u"Half", {text.get()}).result.get().dblVal, 2.5);
    const Outcome truth = call(probe, u"Not", {plain(0)});
    EXPECT_EQ(truth.result.type(), VT_BOOL);
    EXPECT_EQ(truth.result.get().boolVal, VARIANT_TRUE);
    const Outcome texts = call(probe, u"Split", {Variant(u"a,b,c").get()});
    ASSERT_EQ(texts.result.type(), VT_ARRAY | VT_BSTR);
    EXPECT_EQ(windows::element_count(texts.result.get().parray), 3u);
    LONG left = 1;
    SHORT right = 2;
    EXPECT_EQ(call(probe, u"Swap", {by_reference(&left), by_reference(&right)}).result.type(),
              VT_EMPTY);
}

TEST_F(Dispatch, CountsAreChecked) {
    EXPECT_EQ(call(probe, u"Potęga").code, DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(call(probe, u"Potęga", {plain(2), plain(3), plain(4)}).code, DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(call(probe, u"Swap", {plain(2)}).code, DISP_E_BADPARAMCOUNT);
}

TEST_F(Dispatch, OptionalArgumentsMayBeLeftOut) {
    EXPECT_EQ(call(probe, u"Potęga", {plain(3)}).result.get().lVal, 9);
    EXPECT_EQ(call(probe, u"Potęga", {plain(3), Variant::missing().get()}).result.get().lVal, 9);
    EXPECT_EQ(call(probe, u"Potęga", {plain(3), plain(3)}).result.get().lVal, 27);
    const Outcome outcome = call(probe, u"Potęga", {Variant::missing().get(), plain(3)});
    EXPECT_EQ(outcome.code, DISP_E_PARAMNOTOPTIONAL);
    EXPECT_EQ(outcome.argument_index, 1u);
}

TEST_F(Dispatch, NamedArguments) {
    EXPECT_EQ(invoke(probe.get(), u"Potęga", DISPATCH_METHOD, {},
                     {{u"wykładnik", plain(3)}, {u"podstawa", plain(2)}})
                  .result.get()
                  .lVal,
              8);
    EXPECT_EQ(
        invoke(probe.get(), u"Potęga", DISPATCH_METHOD, {plain(5)}, {{u"Wykładnik", plain(1)}})
            .result.get()
            .lVal,
        5);
    EXPECT_EQ(invoke(probe.get(), u"Potęga", DISPATCH_METHOD, {}, {{u"Wykładnik", plain(1)}}).code,
              DISP_E_PARAMNOTOPTIONAL);
    const Outcome twice =
        invoke(probe.get(), u"Potęga", DISPATCH_METHOD, {plain(5)}, {{u"Podstawa", plain(1)}});
    EXPECT_EQ(twice.code, DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(twice.argument_index, 0u);
}

TEST_F(Dispatch, ANamedPlaceThatDoesNotExistIsRefused) {
    VARIANT values[] = {plain(1), plain(2)};
    DISPID place = 2;
    DISPPARAMS parameters{values, &place, 2, 1};
    UINT index = Outcome::none;
    EXPECT_EQ(
        probe->Invoke(12, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, &index),
        DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(index, 0u);
}

TEST_F(Dispatch, TheFirstArgumentThatWillNotDoIsReported) {
    const Variant text(u"x");
    const Outcome first = call(probe, u"Swap", {text.get(), text.get()});
    EXPECT_EQ(first.code, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(first.argument_index, 1u);
    EXPECT_EQ(call(probe, u"Swap", {plain(1), text.get()}).argument_index, 0u);
}

TEST_F(Dispatch, PropertiesAreReadAndWritten) {
    EXPECT_EQ(put(probe, u"LABEL", {Variant(u"Zażółć").get()}).code, S_OK);
    EXPECT_EQ(bstr_of(get(probe, u"label").result), u"Zażółć");
    // Script hosts do not say which it is.
    EXPECT_EQ(bstr_of(invoke(probe.get(), u"Label", DISPATCH_METHOD | DISPATCH_PROPERTYGET).result),
              u"Zażółć");
    EXPECT_EQ(invoke(probe.get(), u"Label", DISPATCH_PROPERTYPUTREF, {plain(1)}).code,
              DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(put(probe, u"Echo", {plain(1)}).code, DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(get(probe, u"Echo", {plain(1)}).code, DISP_E_MEMBERNOTFOUND);
    DISPPARAMS none{};
    EXPECT_EQ(probe->Invoke(99, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
              DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(call(probe, u"NieMa").code, DISP_E_UNKNOWNNAME);
}

TEST_F(Dispatch, ArgumentsAnObjectDoesNotTakeGoToItsDefaultMember) {
    EXPECT_EQ(bstr_of(get(probe, u"Inner", {plain(1)}).result), u"inner one");
    EXPECT_EQ(put(probe, u"Slot", {plain(2), Variant(u"two").get()}).code, S_OK);
    EXPECT_EQ(bstr_of(get(probe, u"Slot", {plain(2)}).result), u"two");
}

TEST_F(Dispatch, ReferencesAreCounted) {
    EXPECT_EQ(probe->AddRef(), 2u);
    EXPECT_EQ(probe->Release(), 1u);
    {
        const Variant itself{ComPointer<IDispatch>(probe.get())};
        const Outcome outcome = call(probe, u"SameObject", {itself.get()});
        ASSERT_EQ(outcome.result.type(), VT_DISPATCH);
        EXPECT_EQ(outcome.result.get().pdispVal, probe.get());
        EXPECT_EQ(probe->AddRef(), 4u);
        probe->Release();
    }
    EXPECT_EQ(probe->AddRef(), 2u);
    probe->Release();
    EXPECT_TRUE(probe.query<IUnknown>());
    EXPECT_TRUE(probe.query<ISupportErrorInfo>());
    EXPECT_FALSE(probe.query<IStream>());
}

}  // namespace
}  // namespace tavrix::test
