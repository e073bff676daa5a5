#include "tests/com/late_host.h"

namespace tavrix::test {
namespace {

// Registers the DLLs beside this program, so that the tests enter as hosts do: by ProgID. They stay
// registered; the prefix belongs to this checkout.
class Registered : public testing::Environment {
  public:
    void SetUp() override {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        for (const char16_t* file : {u"Tavrix.dll", u"TavrixDevAdo.dll", u"TavrixDevCdo.dll"}) {
            const LoadedDll dll(file);
            ASSERT_EQ(dll.function<HRESULT STDAPICALLTYPE()>("DllRegisterServer")(), S_OK);
        }
    }
    void TearDown() override { CoUninitialize(); }
};

}  // namespace
}  // namespace tavrix::test

int main(int argument_count, char** arguments) {
    testing::InitGoogleTest(&argument_count, arguments);
    testing::AddGlobalTestEnvironment(new tavrix::test::Registered);
    return RUN_ALL_TESTS();
}
