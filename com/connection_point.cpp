#include "com/connection_point.h"

#include <algorithm>

namespace tavrix::com {
namespace {

using windows::ComPointer;

struct PointTraits {
    using Interface = IEnumConnectionPoints;
    using Element = IConnectionPoint*;
    using Kept = ComPointer<IConnectionPoint>;
    static Element give(Kept point) noexcept { return point.release(); }
};

struct ConnectionTraits {
    using Interface = IEnumConnections;
    using Element = CONNECTDATA;
    using Kept = EventSinks::Connection;
    static Element give(Kept connection) noexcept {
        return {connection.sink.release(), connection.cookie};
    }
};

/// Walks through what was there when it was made.
template <typename Traits>
class SnapshotEnumerator final : public Unknown<typename Traits::Interface> {
  public:
    using Element = typename Traits::Element;
    using List = std::vector<typename Traits::Kept>;

    explicit SnapshotEnumerator(List list, std::size_t next = 0)
        : list_(std::move(list)), next_(next) {}

    HRESULT STDMETHODCALLTYPE Next(ULONG wanted, Element* elements,
                                   ULONG* fetched) noexcept override {
        if (elements == nullptr || (fetched == nullptr && wanted != 1)) return E_POINTER;
        ULONG given = 0;
        while (given < wanted && next_ < list_.size()) {
            elements[given++] = Traits::give(list_[next_++]);
        }
        if (fetched != nullptr) *fetched = given;
        return given == wanted ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) noexcept override {
        const std::size_t skipped = std::min<std::size_t>(count, list_.size() - next_);
        next_ += skipped;
        return skipped == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Reset() noexcept override {
        next_ = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(typename Traits::Interface** copy) noexcept override {
        if (copy == nullptr) return E_POINTER;
        try {
            *copy = new SnapshotEnumerator(list_, next_);
            return S_OK;
        } catch (...) {
            *copy = nullptr;
            return E_OUTOFMEMORY;
        }
    }

  private:
    List list_;
    std::size_t next_;
};

template <typename Traits>
ComPointer<typename Traits::Interface> make_enumerator(std::vector<typename Traits::Kept> list) {
    return ComPointer<typename Traits::Interface>::adopt(
        new SnapshotEnumerator<Traits>(std::move(list)));
}

}  // namespace

HRESULT ConnectionPoint::QueryInterface(REFIID id, void** object) noexcept {
    if (object == nullptr) return E_POINTER;
    const bool known = id == IID_IUnknown || id == IID_IConnectionPoint;
    *object = known ? static_cast<IConnectionPoint*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

HRESULT ConnectionPoint::GetConnectionInterface(IID* id) noexcept {
    if (id == nullptr) return E_POINTER;
    *id = events_id();
    return S_OK;
}

HRESULT ConnectionPoint::GetConnectionPointContainer(
    IConnectionPointContainer** container) noexcept {
    if (container == nullptr) return E_POINTER;
    *container = ComPointer<IConnectionPointContainer>(&container_).release();
    return S_OK;
}

HRESULT ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) noexcept {
    if (cookie == nullptr) return E_POINTER;
    *cookie = 0;
    if (sink == nullptr) return E_POINTER;
    try {
        *cookie = sinks_->connect(*sink);
        return S_OK;
    } catch (const ArgumentError& error) {
        return error.code();
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT ConnectionPoint::Unadvise(DWORD cookie) noexcept {
    // The sink may hold the last reference to the object.
    const ComPointer<IConnectionPoint> alive(this);
    return sinks_->disconnect(cookie) ? S_OK : CONNECT_E_NOCONNECTION;
}

HRESULT ConnectionPoint::EnumConnections(IEnumConnections** connections) noexcept {
    if (connections == nullptr) return E_POINTER;
    *connections = nullptr;
    try {
        *connections = make_enumerator<ConnectionTraits>(sinks_->connections()).release();
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

ComPointer<IEnumConnectionPoints> enumerate(IConnectionPoint& point) {
    return make_enumerator<PointTraits>({ComPointer<IConnectionPoint>(&point)});
}

}  // namespace tavrix::com
