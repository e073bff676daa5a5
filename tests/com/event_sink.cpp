#include "tests/com/event_sink.h"

#include <algorithm>

namespace tavrix::test {

HRESULT EventSink::QueryInterface(REFIID id, void** object) noexcept {
    return Unknown::QueryInterface(id == id_ ? IID_IDispatch : id, object);
}

HRESULT EventSink::GetTypeInfoCount(UINT* count) noexcept {
    *count = 0;
    return S_OK;
}

HRESULT EventSink::GetTypeInfo(UINT, LCID, ITypeInfo**) noexcept {
    return E_NOTIMPL;
}

HRESULT EventSink::GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) noexcept {
    ADD_FAILURE() << "events are raised by their numbers";
    return E_NOTIMPL;
}

HRESULT EventSink::Invoke(DISPID id, REFIID reserved, LCID, WORD flags, DISPPARAMS* parameters,
                          VARIANT*, EXCEPINFO*, UINT*) {
    EXPECT_EQ(reserved, IID_NULL);
    EXPECT_EQ(flags, DISPATCH_METHOD);
    EXPECT_EQ(parameters->cNamedArgs, 0u);
    events.push_back(id);
    ReceivedEvent event{id, {parameters->rgvarg, parameters->rgvarg + parameters->cArgs}};
    std::reverse(event.arguments.begin(), event.arguments.end());
    return handler ? handler(event) : S_OK;
}

ComPointer<IConnectionPoint> events_of(const ComPointer<IDispatch>& object, const GUID& id) {
    ComPointer<IConnectionPoint> point;
    const auto container = object.query<IConnectionPointContainer>();
    EXPECT_TRUE(container);
    if (container) {
        EXPECT_EQ(container->FindConnectionPoint(id, point.out()), S_OK);
    }
    return point;
}

ConnectedSink::ConnectedSink(const ComPointer<IDispatch>& object, const GUID& events_id,
                             EventSink::Handler handler)
    : point_(events_of(object, events_id)),
      sink_(ComPointer<EventSink>::adopt(new EventSink(events_id))) {
    sink_->handler = std::move(handler);
    EXPECT_EQ(point_->Advise(sink_.get(), &cookie_), S_OK);
}

}  // namespace tavrix::test
