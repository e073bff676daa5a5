#pragma once

#include <functional>

#include "com/unknown.h"
#include "tests/com/late_host.h"

namespace tavrix::test {

/// A host's sink, late-bound and written by hand, because no script host here connects events. It
/// writes down the events and does what its handler says.
class EventSink final : public com::Unknown<IDispatch> {
  public:
    /// The arguments stand in the order of the source text, as they came: references where the host
    /// can write back.
    using Handler = std::function<HRESULT(DISPID event, const std::vector<VARIANT>& arguments)>;

    /// Answers to the interface `id` too, as sinks of VB6 and .NET do; IID_NULL for none such.
    explicit EventSink(const GUID& id, Handler does = {}) : handler(std::move(does)), id_(id) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override {
        return Unknown::QueryInterface(id == id_ ? IID_IDispatch : id, object);
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID,
                                            DISPID*) noexcept override {
        ADD_FAILURE() << "events are raised by their numbers";
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID reserved, LCID, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO* information, UINT*) override;

    /// "1, text abc, ref bool 0" for each event, as it came.
    std::vector<std::string> events;
    Handler handler;

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
