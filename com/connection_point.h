#pragma once

#include <memory>

#include "com/event_sinks.h"
#include "com/unknown.h"

namespace tavrix::com {

// The system's interfaces have no virtual destructor.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Where hosts connect their sinks to one object. A part of that object: it has an identity of its
/// own, but lives and is counted with its container.
class ConnectionPoint final : public IConnectionPoint {
  public:
    ConnectionPoint(IConnectionPointContainer& container,
                    std::shared_ptr<EventSinks> sinks) noexcept
        : container_(container), sinks_(std::move(sinks)) {}
    ConnectionPoint(const ConnectionPoint&) = delete;
    ConnectionPoint& operator=(const ConnectionPoint&) = delete;

    const GUID& events_id() const noexcept { return sinks_->table().interface_id; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return container_.AddRef(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return container_.Release(); }
    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* id) noexcept override;
    HRESULT STDMETHODCALLTYPE
    GetConnectionPointContainer(IConnectionPointContainer** container) noexcept override;
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) noexcept override;
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) noexcept override;
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections** connections) noexcept override;

  private:
    IConnectionPointContainer& container_;
    std::shared_ptr<EventSinks> sinks_;
};

#pragma GCC diagnostic pop

/// What walks through the one connection point of an object. Throws std::bad_alloc.
windows::ComPointer<IEnumConnectionPoints> enumerate(IConnectionPoint& point);

}  // namespace tavrix::com
