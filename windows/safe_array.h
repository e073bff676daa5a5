#pragma once

#include "base/text.h"
#include "windows/automation.h"
#include "windows/owned.h"

namespace tavrix::windows {

using SafeArray = Owned<SAFEARRAY*, SafeArrayDestroy>;

/// A zero-based array of unsigned bytes. Throws std::bad_alloc.
SafeArray make_byte_array(base::ByteView bytes);

/// Keeps an array's memory in place while it is read or written.
class SafeArrayAccess {
  public:
    explicit SafeArrayAccess(SAFEARRAY* array) noexcept
        : array_(SUCCEEDED(SafeArrayAccessData(array, &data_)) ? array : nullptr) {}
    ~SafeArrayAccess() {
        // An array without data is locked like any other.
        if (array_ != nullptr) SafeArrayUnaccessData(array_);
    }
    SafeArrayAccess(const SafeArrayAccess&) = delete;
    SafeArrayAccess& operator=(const SafeArrayAccess&) = delete;

    /// Null when the array cannot be accessed or has no data.
    void* data() const noexcept { return data_; }

  private:
    void* data_ = nullptr;
    SAFEARRAY* array_;
};

/// The number of elements of an array of one dimension; the null array has none.
std::size_t element_count(SAFEARRAY* array) noexcept;

/// True for an array of one dimension whose elements are single bytes, whatever its VARIANT says,
/// and which has them.
bool is_byte_array(SAFEARRAY* array) noexcept;
/// The content of such an array.
base::Bytes bytes_of(SAFEARRAY* array);

}  // namespace tavrix::windows
