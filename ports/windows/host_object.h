#pragma once

#include <utility>
#include <vector>

#include "ports/host_object.h"
#include "windows/late_bound.h"

namespace tavrix::windows {

/// A host's object behind its dispatch interface; may be Nothing. In sight because the public
/// classes' arguments become one.
class HostObject final : public ports::HostObject {
  public:
    explicit HostObject(ComPointer<IDispatch> object) noexcept : object_(std::move(object)) {}
    base::Value get(const char16_t* name, std::span<const std::int32_t> arguments) override;

  private:
    DISPID id_of(const char16_t* name);

    LateBound object_;
    // A grid is asked for the same few members thousands of times.
    std::vector<std::pair<base::Text, DISPID>> known_;
};

}  // namespace tavrix::windows
