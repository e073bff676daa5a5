// Hosts whose threads live in another apartment than the objects: everything goes through proxies.

#include "tests/com/apartment.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "tests/com/probe.h"

namespace tavrix::test {
namespace {

// Tavrix.Rejestr's own interface: a registered one, for which the system makes proxies.
constexpr com::ClassTable registered_class = {
    .class_id = com::guid("6E2C1F57-1BD0-4C43-8B0C-5B7F2B1C9A51"),
    .interface_id = com::guid("CD38548A-9090-4CA6-92AF-5F2CA9751927"),
    .name = u"Registered",
    .help = u"",
    .members = {},
};

TEST(Apartments, OnlyTheObjectItselfIsTakenForOneOfOurs) {
    const auto target = std::make_shared<int>(7);
    const auto object = com::make_object(registered_class, target);
    const auto target_of = [](const ComPointer<IDispatch>& given, const com::ClassTable& table) {
        return com::DispatchObject::target_of<int>(given.get(), table);
    };
    EXPECT_EQ(target_of(object, registered_class), target);
    EXPECT_EQ(target_of(object, probe_class), nullptr) << "of another class";
    EXPECT_EQ(target_of(create(u"Tavrix.Rejestr"), registered_class), nullptr)
        << "of another module";
    Parcel parcel(object);
    in_multithreaded_apartment([&] {
        const auto proxy = parcel.take();
        ASSERT_TRUE(proxy);
        ComPointer<IDispatch> same;
        EXPECT_EQ(proxy->QueryInterface(registered_class.interface_id, same.out_void()), S_OK);
        EXPECT_EQ(target_of(proxy, registered_class), nullptr);
    });
}

TEST(Apartments, AMultithreadedHostIsServed) {
    in_multithreaded_apartment([] {
        const auto ksef = create(u"Tavrix.KseF_comm");
        BSTR text = windows::make_bstr(u"AAH/").release();
        EXPECT_EQ(answer(ksef, u"Base64ToBytes", {by_reference(&text, VT_BSTR)}), "byte[] 0 1 255");
        SysFreeString(text);
        EXPECT_EQ(answer(ksef, u"Sha256XmlSimpleb", {u"no bytes"}),
                  refused(DISP_E_TYPEMISMATCH, 0));
        EXPECT_FALSE(call(ksef, u"Base64DecodeToBytes", {u"*"}).description.empty());
    });
}

}  // namespace
}  // namespace tavrix::test
