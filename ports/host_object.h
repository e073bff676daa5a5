#pragma once

namespace tavrix::ports {

/// An object of the host that the library passes on to one of its own windows, a grid for example.
/// Owned by the host and valid while the call lasts.
class HostObject {
  public:
    virtual ~HostObject() = default;
};

}  // namespace tavrix::ports
