#pragma once

#include <functional>

#include "com/unknown.h"
#include "tests/com/late_host.h"

namespace tavrix::test {

/// What one event brought to a sink.
struct ReceivedEvent {
    DISPID id;
    /// In the order of the source text, as they came: references where the host can write back.
    std::vector<VARIANT> arguments;
};

/// A host's sink, late-bound and written by hand, because no script host here connects events. It
/// remembers the numbers of the events and does what its handler says.
class EventSink final : public com::Unknown<IDispatch> {
  public:
    using Handler = std::function<HRESULT(const ReceivedEvent&)>;

    /// Answers to the interface `id` too, as sinks of VB6 and .NET do; IID_NULL for none such.
    explicit EventSink(const GUID& id = IID_NULL) : id_(id) {}
    ~EventSink() override {
        if (ended != nullptr) *ended = true;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID,
                                            DISPID*) noexcept override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID reserved, LCID, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO* information, UINT*) override;

    std::vector<DISPID> events;
    Handler handler;
    bool* ended = nullptr;

  private:
    GUID id_;
};

/// The connection point for the events of `object`; the test fails when there is none.
ComPointer<IConnectionPoint> events_of(const ComPointer<IDispatch>& object, const GUID& id);

/// A new sink, connected for as long as this lives.
class ConnectedSink {
  public:
    ConnectedSink(const ComPointer<IDispatch>& object, const GUID& events_id,
                  EventSink::Handler handler = {});
    ~ConnectedSink() { disconnect(); }
    ConnectedSink(const ConnectedSink&) = delete;
    ConnectedSink& operator=(const ConnectedSink&) = delete;

    HRESULT disconnect() { return point_->Unadvise(cookie_); }
    EventSink* operator->() const { return sink_.get(); }

  private:
    ComPointer<IConnectionPoint> point_;
    ComPointer<EventSink> sink_;
    DWORD cookie_ = 0;
};

}  // namespace tavrix::test
