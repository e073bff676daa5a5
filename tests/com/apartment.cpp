#include "tests/com/apartment.h"

#include <thread>

namespace tavrix::test {

void in_multithreaded_apartment(const std::function<void()>& work) {
    const HANDLE done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread thread([&] {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        work();
        CoUninitialize();
        SetEvent(done);
    });
    constexpr DWORD longest_wait_ms = 60'000;
    DWORD index = 0;
    EXPECT_EQ(CoWaitForMultipleHandles(0, longest_wait_ms, 1, const_cast<HANDLE*>(&done), &index),
              S_OK);
    thread.join();
    CloseHandle(done);
}

Parcel::Parcel(const ComPointer<IDispatch>& object) {
    EXPECT_EQ(CoMarshalInterThreadInterfaceInStream(IID_IDispatch, object.get(), stream_.out()),
              S_OK);
}

ComPointer<IDispatch> Parcel::take() {
    ComPointer<IDispatch> object;
    EXPECT_EQ(CoGetInterfaceAndReleaseStream(stream_.release(), IID_IDispatch, object.out_void()),
              S_OK);
    return object;
}

}  // namespace tavrix::test
