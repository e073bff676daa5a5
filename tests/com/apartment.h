#pragma once

#include <functional>

#include "tests/com/late_host.h"

namespace tavrix::test {

/// Runs `work` to its end on a thread of the multithreaded apartment. Calls to objects of this
/// thread's apartment come through meanwhile.
void in_multithreaded_apartment(const std::function<void()>& work);

/// An object of this thread on its way to one other thread, which takes it once.
class Parcel {
  public:
    explicit Parcel(const ComPointer<IDispatch>& object);
    /// The object as the taking thread's apartment sees it.
    ComPointer<IDispatch> take();

  private:
    ComPointer<IStream> stream_;
};

}  // namespace tavrix::test
