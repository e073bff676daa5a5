#include "tests/com/event_sink.h"

#include <algorithm>

namespace tavrix::test {

HRESULT EventSink::Invoke(DISPID id, REFIID reserved, LCID, WORD flags, DISPPARAMS* parameters,
                          VARIANT*, EXCEPINFO*, UINT*) {
    EXPECT_EQ(reserved, IID_NULL);
    EXPECT_EQ(flags, DISPATCH_METHOD);
    EXPECT_EQ(parameters->cNamedArgs, 0u);
    std::vector<VARIANT> arguments(parameters->rgvarg, parameters->rgvarg + parameters->cArgs);
    std::reverse(arguments.begin(), arguments.end());
    events.push_back(std::to_string(id));
    for (const VARIANT& argument : arguments) events.back() += ", " + written(argument);
    return handler ? handler(id, arguments) : S_OK;
}

ComPointer<IConnectionPoint> events_of(const ComPointer<IDispatch>& object, const GUID& id) {
    ComPointer<IConnectionPoint> point;
    const auto container = object.query<IConnectionPointContainer>();
    EXPECT_TRUE(container && container->FindConnectionPoint(id, point.out()) == S_OK);
    return point;
}

ConnectedSink::ConnectedSink(const ComPointer<IDispatch>& object, const GUID& events_id,
                             EventSink::Handler handler)
    : point_(events_of(object, events_id)),
      sink_(ComPointer<EventSink>::adopt(new EventSink(events_id, std::move(handler)))) {
    EXPECT_EQ(point_->Advise(sink_.get(), &cookie_), S_OK);
}

}  // namespace tavrix::test
