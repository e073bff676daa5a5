// Connecting sinks and raising events, against a class that does nothing else.

#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"
#include "tests/com/apartment.h"
#include "tests/com/event_sink.h"
#include "tests/com/probe.h"

namespace tavrix::test {
namespace {

class Talker {
  public:
    explicit Talker(std::shared_ptr<com::EventSinks> sinks) : sinks_(std::move(sinks)) {}
    bool Ask(base::Text& answer) {
        bool stop = false;
        Asked(answer, stop);
        return stop;
    }
    void Asked(base::Text& answer, bool& stop);

  private:
    std::shared_ptr<com::EventSinks> sinks_;
};

constexpr auto talker_members =
    com::members(com::method<&Talker::Ask>(2, u"Ask", u"", com::by_reference(u"answer")));
constexpr auto talker_event_rows = com::members(com::event<&Talker::Asked>(
    12, u"Asked", u"", com::by_reference(u"Answer"), com::by_reference(u"Stop")));
constexpr com::EventTable talker_events = {
    .interface_id = com::guid("68509742-3209-4D59-9BC2-48495E75789A"),
    .help = u"",
    .members = talker_event_rows,
};
constexpr com::ClassTable talker_class = {
    .class_id = com::guid("324FF821-11EF-4A0B-BBD7-9C106E836655"),
    .interface_id = com::guid("42442AC6-33CE-427B-A8C2-A1A2AC421F0C"),
    .name = u"Talker",
    .help = u"",
    .members = talker_members,
    .events = &talker_events,
};

void Talker::Asked(base::Text& answer, bool& stop) {
    sinks_->fire(*com::row_of(talker_event_rows, u"Asked"), answer, stop);
}

ComPointer<IDispatch> make_talker() {
    auto sinks = std::make_shared<com::EventSinks>(talker_events);
    return com::make_object(talker_class, std::make_shared<Talker>(sinks), sinks);
}

using Lines = std::vector<std::string>;
const GUID& events_id = talker_events.interface_id;

class Events : public testing::Test {
  protected:
    ComPointer<IDispatch> talker = make_talker();
    ComPointer<IConnectionPoint> point = events_of(talker, events_id);
    Variant variable{u""};

    std::string ask() { return answer(talker, u"Ask", {test::by_reference(variable)}); }
    /// A handler that answers the question, stops the source and ends with the code.
    static EventSink::Handler answering(const wchar_t* text, HRESULT code) {
        return [=](DISPID, const std::vector<VARIANT>& arguments) {
            SysReAllocString(arguments[0].pbstrVal, text);
            *arguments[1].pboolVal = VARIANT_TRUE;
            return code;
        };
    }
};

TEST_F(Events, TheSourceSaysWhatItRaisesAndWhereToConnect) {
    EXPECT_FALSE(make_probe().query<IConnectionPointContainer>());
    EXPECT_FALSE(make_probe().query<IProvideClassInfo2>()) << "a class without events";
    const auto information = talker.query<IProvideClassInfo2>();
    ASSERT_TRUE(information);
    GUID id{};
    EXPECT_EQ(information->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &id), S_OK);
    EXPECT_EQ(id, events_id);
    id = {};
    EXPECT_EQ(point->GetConnectionInterface(&id), S_OK);
    EXPECT_EQ(id, events_id);

    auto container = talker.query<IConnectionPointContainer>();
    ComPointer<IConnectionPoint> other;
    EXPECT_EQ(container->FindConnectionPoint(IID_IDispatch, other.out()), CONNECT_E_NOCONNECTION);
    EXPECT_FALSE(other);
    ComPointer<IEnumConnectionPoints> list;
    ASSERT_EQ(container->EnumConnectionPoints(list.out()), S_OK);
    IConnectionPoint* found[2] = {};
    ULONG count = 0;
    EXPECT_EQ(list->Next(2, found, &count), S_FALSE);
    ASSERT_EQ(count, 1u);
    EXPECT_EQ(ComPointer<IConnectionPoint>::adopt(found[0]).get(), point.get());

    EXPECT_FALSE(point.query<IDispatch>()) << "an identity of its own";
    list = {};
    container = {};
    talker = {};
    // The point keeps its source alive.
    ASSERT_EQ(point->GetConnectionPointContainer(container.out()), S_OK);
    EXPECT_TRUE(container.query<IDispatch>());
}

TEST_F(Events, SinksConnectUnderTheEventsOrUnderDispatch) {
    const auto late = ComPointer<EventSink>::adopt(new EventSink(IID_NULL));
    const auto early = ComPointer<EventSink>::adopt(new EventSink(events_id));
    DWORD first = 0;
    DWORD second = 0;
    DWORD none = 7;
    EXPECT_EQ(point->Advise(late.get(), &first), S_OK);
    EXPECT_EQ(point->Advise(early.get(), &second), S_OK);
    EXPECT_EQ(point->Advise(point.get(), &none), CONNECT_E_CANNOTCONNECT) << "is no sink";
    EXPECT_EQ(none, 0u);
    EXPECT_EQ(point->Advise(nullptr, &none), E_POINTER);
    ComPointer<IEnumConnections> list;
    ASSERT_EQ(point->EnumConnections(list.out()), S_OK);
    EXPECT_EQ(list->Skip(2), S_OK);
    EXPECT_EQ(list->Skip(1), S_FALSE);

    EXPECT_NE(first, 0u);
    EXPECT_EQ(ask(), "bool 0");
    EXPECT_EQ(early->events, (Lines{"12, ref text , ref bool 0"}));
    EXPECT_EQ(point->Unadvise(second), S_OK);
    EXPECT_EQ(point->Unadvise(second), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(ask(), "bool 0");
    EXPECT_EQ(late->events.size(), 2u);
    EXPECT_EQ(early->events.size(), 1u);
    DWORD again = 0;
    EXPECT_EQ(point->Advise(early.get(), &again), S_OK);
    EXPECT_NE(again, second) << "a host that kept the old cookie must not end the new connection";
}

TEST_F(Events, HandlersAnswerThroughReferencesAndTheNextOneSeesIt) {
    const ConnectedSink first(talker, events_id, answering(L"pierwszy", S_OK));
    const ConnectedSink second(talker, events_id, answering(L"nieudany", E_FAIL));
    EXPECT_EQ(ask(), "bool -1");
    EXPECT_EQ(first->events, (Lines{"12, ref text , ref bool 0"}));
    EXPECT_EQ(second->events, (Lines{"12, ref text pierwszy, ref bool -1"}));
    EXPECT_EQ(written(variable.get()), "text pierwszy") << "a failed handler has answered nothing";
}

TEST_F(Events, SinksOfAnotherApartmentAreAskedAndAnswer) {
    Parcel parcel(talker);
    in_multithreaded_apartment([&] {
        const auto proxy = parcel.take();
        const ConnectedSink sink(proxy, events_id, answering(L"stamtąd", S_OK));
        BSTR text = windows::make_bstr(u"pytanie").release();
        EXPECT_EQ(answer(proxy, u"Ask", {test::by_reference(&text, VT_BSTR)}), "bool -1");
        EXPECT_EQ(sink->events, (Lines{"12, ref text pytanie, ref bool 0"}));
        EXPECT_EQ(windows::view_of(text), u"stamtąd");
        SysFreeString(text);
    });
}

TEST_F(Events, SinksMayFailCallBackAndComeAndGo) {
    const ConnectedSink throwing(talker, events_id, [](DISPID, const auto&) -> HRESULT {
        throw std::runtime_error("handler");
    });
    auto removed = std::unique_ptr<ConnectedSink>();
    std::unique_ptr<ConnectedSink> added;
    // Leaves, takes the next one along, calls the source and brings a new one in.
    ConnectedSink leaving(talker, events_id, [&](DISPID, const auto&) {
        EXPECT_EQ(leaving.disconnect(), S_OK);
        removed.reset();
        EXPECT_EQ(ask(), "bool 0");
        added = std::make_unique<ConnectedSink>(talker, events_id);
        return S_OK;
    });
    removed = std::make_unique<ConnectedSink>(talker, events_id, [](DISPID, const auto&) {
        ADD_FAILURE() << "no longer connected";
        return S_OK;
    });
    const ConnectedSink last(talker, events_id);
    EXPECT_EQ(ask(), "bool 0");
    EXPECT_EQ(last->events.size(), 2u) << "the event and the one raised meanwhile";
    ASSERT_TRUE(added);
    EXPECT_TRUE((*added)->events.empty()) << "connected after the event was raised";
    EXPECT_EQ(ask(), "bool 0");
    EXPECT_EQ(leaving->events.size(), 1u);
    EXPECT_EQ((*added)->events.size(), 1u);
}

TEST_F(Events, SinksGoWithTheirConnectionOrWithASourceGivenUpByAHandler) {
    // A handler lives as long as its sink.
    const auto held = std::make_shared<int>();
    {
        const ConnectedSink sink(talker, events_id, [held](DISPID, const auto&) { return S_OK; });
    }
    EXPECT_EQ(held.use_count(), 1);
    auto sink =
        ComPointer<EventSink>::adopt(new EventSink(IID_NULL, [this, held](DISPID, const auto&) {
            point = {};
            talker = {};
            return S_OK;
        }));
    DWORD cookie = 0;
    EXPECT_EQ(point->Advise(sink.get(), &cookie), S_OK);
    sink = {};
    EXPECT_EQ(ask(), "bool 0");
    EXPECT_FALSE(talker);
    EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace tavrix::test
