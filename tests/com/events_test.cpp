// Connecting sinks and raising events, against a class that does nothing else.

#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"
#include "tests/com/event_sink.h"
#include "tests/com/probe.h"

namespace tavrix::test {
namespace {

using com::by_reference;
using com::by_value;

class TalkerEvents {
  public:
    virtual ~TalkerEvents() = default;
    virtual void Said(const base::Text& text, std::int32_t times) = 0;
    virtual void Asked(base::Text& answer, bool& stop) = 0;
    virtual void Gave(const base::Bytes& bytes) = 0;
};

class Talker {
  public:
    explicit Talker(std::unique_ptr<TalkerEvents> events) : events_(std::move(events)) {}
    void Say(const base::Text& text, std::int32_t times) { events_->Said(text, times); }
    bool Ask(base::Text& answer) {
        bool stop = false;
        events_->Asked(answer, stop);
        return stop;
    }
    void Give(const base::Bytes& bytes) { events_->Gave(bytes); }

  private:
    std::unique_ptr<TalkerEvents> events_;
};

constexpr auto talker_members =
    com::members(com::method<&Talker::Say>(1, u"Say", u"", by_value(u"text"), by_value(u"times")),
                 com::method<&Talker::Ask>(2, u"Ask", u"", by_reference(u"answer")),
                 com::method<&Talker::Give>(3, u"Give", u"", by_reference(u"bytes")));
constexpr auto talker_event_rows =
    com::members(com::event<&TalkerEvents::Said>(11, u"Said", u"Powiedziano.", by_value(u"Text"),
                                                 by_value(u"Times")),
                 com::event<&TalkerEvents::Asked>(12, u"Asked", u"", by_reference(u"Answer"),
                                                  by_reference(u"Stop")),
                 com::event<&TalkerEvents::Gave>(13, u"Gave", u"", by_reference(u"Bytes")));
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

class FiredTalkerEvents final : public TalkerEvents {
  public:
    explicit FiredTalkerEvents(std::shared_ptr<com::EventSinks> sinks) : sinks_(std::move(sinks)) {}
    void Said(const base::Text& text, std::int32_t times) override {
        sinks_->fire(*com::row_of(talker_event_rows, u"Said"), text, times);
    }
    void Asked(base::Text& answer, bool& stop) override {
        sinks_->fire(*com::row_of(talker_event_rows, u"Asked"), answer, stop);
    }
    void Gave(const base::Bytes& bytes) override {
        sinks_->fire(*com::row_of(talker_event_rows, u"Gave"), bytes);
    }

  private:
    std::shared_ptr<com::EventSinks> sinks_;
};

ComPointer<IDispatch> make_talker() {
    auto sinks = std::make_shared<com::EventSinks>(talker_events);
    auto talker = std::make_shared<Talker>(std::make_unique<FiredTalkerEvents>(sinks));
    return com::make_object(talker_class, std::move(talker), std::move(sinks));
}

const GUID& events_id = talker_events.interface_id;

class Events : public testing::Test {
  protected:
    ComPointer<IDispatch> talker = make_talker();
    ComPointer<IConnectionPoint> point = events_of(talker, events_id);

    HRESULT say() { return call(talker, u"Say", {Variant(u"tak").get(), plain(3)}).code; }
    ULONG connections() {
        ComPointer<IEnumConnections> list;
        EXPECT_EQ(point->EnumConnections(list.out()), S_OK);
        ULONG count = 0;
        CONNECTDATA data{};
        while (list->Next(1, &data, nullptr) == S_OK) {
            data.pUnk->Release();
            ++count;
        }
        return count;
    }
};

TEST_F(Events, TheSourceSaysWhatItRaises) {
    EXPECT_FALSE(make_probe().query<IConnectionPointContainer>());
    EXPECT_FALSE(make_probe().query<IProvideClassInfo2>()) << "a class without events";
    const auto information = talker.query<IProvideClassInfo2>();
    ASSERT_TRUE(information);
    GUID id{};
    EXPECT_EQ(information->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &id), S_OK);
    EXPECT_EQ(id, events_id);
    EXPECT_EQ(information->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID + 1, &id), E_INVALIDARG);
    EXPECT_EQ(information->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, nullptr), E_POINTER);
    EXPECT_EQ(talker.query<IUnknown>().get(), information.query<IUnknown>().get());
}

TEST_F(Events, PointsAreFoundByTheirInterfaceAndOneByOne) {
    auto container = talker.query<IConnectionPointContainer>();
    EXPECT_EQ(container.query<IUnknown>().get(), talker.query<IUnknown>().get());
    ComPointer<IConnectionPoint> other;
    EXPECT_EQ(container->FindConnectionPoint(IID_IDispatch, other.out()), CONNECT_E_NOCONNECTION);
    EXPECT_FALSE(other);
    EXPECT_EQ(container->FindConnectionPoint(events_id, nullptr), E_POINTER);
    EXPECT_EQ(container->EnumConnectionPoints(nullptr), E_POINTER);

    ComPointer<IEnumConnectionPoints> list;
    ASSERT_EQ(container->EnumConnectionPoints(list.out()), S_OK);
    IConnectionPoint* found[2] = {};
    ULONG count = 0;
    EXPECT_EQ(list->Next(2, found, nullptr), E_POINTER);
    EXPECT_EQ(list->Next(2, found, &count), S_FALSE);
    ASSERT_EQ(count, 1u);
    EXPECT_EQ(ComPointer<IConnectionPoint>::adopt(found[0]).get(), point.get());
    EXPECT_EQ(list->Skip(1), S_FALSE);
    EXPECT_EQ(list->Reset(), S_OK);
    ComPointer<IEnumConnectionPoints> copy;
    EXPECT_EQ(list->Clone(copy.out()), S_OK);
    EXPECT_EQ(copy->Skip(1), S_OK);

    IID id{};
    EXPECT_EQ(point->GetConnectionInterface(&id), S_OK);
    EXPECT_EQ(id, events_id);
    // The point keeps its source alive, and is counted with it.
    const ULONG references = (point->AddRef(), point->Release());
    EXPECT_EQ(point.query<IUnknown>().get(), static_cast<IUnknown*>(point.get()));
    EXPECT_EQ((point->AddRef(), point->Release()), references);
    EXPECT_FALSE(point.query<IDispatch>());
    container = {};
    talker = {};
    ASSERT_EQ(point->GetConnectionPointContainer(container.out()), S_OK);
    EXPECT_TRUE(container.query<IDispatch>());
}

class NoSink final : public com::Unknown<IUnknown> {};

TEST_F(Events, SinksConnectUnderTheEventsOrUnderDispatch) {
    const auto late = ComPointer<EventSink>::adopt(new EventSink);
    const auto early = ComPointer<EventSink>::adopt(new EventSink(events_id));
    const auto neither = ComPointer<NoSink>::adopt(new NoSink);
    DWORD first = 0;
    DWORD second = 0;
    DWORD none = 7;
    EXPECT_EQ(point->Advise(late.get(), &first), S_OK);
    EXPECT_EQ(point->Advise(early.get(), &second), S_OK);
    EXPECT_EQ(point->Advise(neither.get(), &none), CONNECT_E_CANNOTCONNECT);
    EXPECT_EQ(none, 0u);
    EXPECT_EQ(point->Advise(nullptr, &none), E_POINTER);
    EXPECT_EQ(point->Advise(late.get(), nullptr), E_POINTER);
    EXPECT_EQ(connections(), 2u);

    EXPECT_NE(first, 0u);
    EXPECT_NE(first, second);
    EXPECT_EQ(point->Unadvise(second), S_OK);
    EXPECT_EQ(point->Unadvise(second), CONNECT_E_NOCONNECTION);
    EXPECT_EQ(point->Unadvise(0), CONNECT_E_NOCONNECTION);
    DWORD again = 0;
    EXPECT_EQ(point->Advise(early.get(), &again), S_OK);
    EXPECT_NE(again, second) << "a host that kept the old cookie must not end the new connection";

    EXPECT_EQ(say(), S_OK);
    EXPECT_EQ(late->events, std::vector<DISPID>{11});
    EXPECT_EQ(early->events, std::vector<DISPID>{11});
}

TEST_F(Events, DisconnectedAndForgottenSinksAreReleased) {
    bool ended[2] = {};
    {
        ConnectedSink sink(talker, events_id);
        sink->ended = &ended[0];
    }
    EXPECT_TRUE(ended[0]);
    auto left_behind = ComPointer<EventSink>::adopt(new EventSink);
    left_behind->ended = &ended[1];
    DWORD cookie = 0;
    EXPECT_EQ(point->Advise(left_behind.get(), &cookie), S_OK);
    left_behind = {};
    EXPECT_FALSE(ended[1]);
    point = {};
    talker = {};
    EXPECT_TRUE(ended[1]);
}

TEST_F(Events, ArgumentsTravelAsDeclared) {
    std::vector<base::Text> seen;
    const ConnectedSink sink(talker, events_id, [&](const ReceivedEvent& event) {
        if (event.id == 11) {
            EXPECT_EQ(event.arguments[0].vt, VT_BSTR);
            seen.emplace_back(windows::view_of(event.arguments[0].bstrVal));
            EXPECT_EQ(event.arguments[1].vt, VT_I4);
            EXPECT_EQ(event.arguments[1].lVal, 3);
            // A handler may call the source.
            return call(talker, u"Give", {Variant(base::Bytes{0, 255}).get()}).code;
        }
        EXPECT_EQ(event.arguments[0].vt, VT_BYREF | VT_ARRAY | VT_UI1);
        EXPECT_EQ(com::Codec<base::Bytes>::read(windows::look_through(event.arguments[0]), 0),
                  (base::Bytes{0, 255}));
        return S_OK;
    });
    EXPECT_EQ(say(), S_OK);
    EXPECT_EQ(seen, std::vector<base::Text>{u"tak"});
    EXPECT_EQ(sink->events, (std::vector<DISPID>{11, 13}));
}

TEST_F(Events, HandlersAnswerThroughReferencesAndTheNextOneSeesIt) {
    const ConnectedSink first(talker, events_id, [](const ReceivedEvent& event) {
        EXPECT_EQ(event.arguments[0].vt, VT_BYREF | VT_BSTR);
        EXPECT_EQ(event.arguments[1].vt, VT_BYREF | VT_BOOL);
        SysReAllocString(event.arguments[0].pbstrVal, L"pierwszy");
        *event.arguments[1].pboolVal = VARIANT_TRUE;
        return S_OK;
    });
    base::Text seen;
    const ConnectedSink second(talker, events_id, [&](const ReceivedEvent& event) {
        seen = windows::view_of(*event.arguments[0].pbstrVal);
        EXPECT_EQ(*event.arguments[1].pboolVal, VARIANT_TRUE);
        SysReAllocString(event.arguments[0].pbstrVal, L"nieudany");
        return E_FAIL;
    });
    Variant answer(u"");
    const Outcome outcome = call(talker, u"Ask", {test::by_reference(answer.address())});
    EXPECT_EQ(outcome.result.get().boolVal, VARIANT_TRUE);
    EXPECT_EQ(seen, u"pierwszy");
    EXPECT_EQ(bstr_of(answer), u"pierwszy") << "a failed handler has answered nothing";
}

TEST_F(Events, AFailingSinkSpoilsNothing) {
    const ConnectedSink failing(talker, events_id,
                                [](const ReceivedEvent&) { return DISP_E_MEMBERNOTFOUND; });
    const ConnectedSink throwing(talker, events_id, [](const ReceivedEvent&) -> HRESULT {
        throw std::runtime_error("handler");
    });
    const ConnectedSink last(talker, events_id);
    EXPECT_EQ(say(), S_OK);
    EXPECT_EQ(last->events.size(), 1u);
}

TEST_F(Events, SinksComeAndGoWhileAnEventIsRaised) {
    std::unique_ptr<ConnectedSink> leaving;
    std::unique_ptr<ConnectedSink> removed;
    std::unique_ptr<ConnectedSink> added;
    bool removed_was_called = false;
    // Leaves, takes the next one along and brings a new one in.
    leaving = std::make_unique<ConnectedSink>(talker, events_id, [&](const ReceivedEvent&) {
        EXPECT_EQ(leaving->disconnect(), S_OK);
        removed.reset();
        added = std::make_unique<ConnectedSink>(talker, events_id);
        return S_OK;
    });
    removed = std::make_unique<ConnectedSink>(talker, events_id, [&](const ReceivedEvent&) {
        removed_was_called = true;
        return S_OK;
    });
    const ConnectedSink last(talker, events_id);
    EXPECT_EQ(say(), S_OK);
    EXPECT_FALSE(removed_was_called);
    EXPECT_EQ(last->events.size(), 1u);
    ASSERT_TRUE(added);
    EXPECT_TRUE((*added)->events.empty()) << "connected after the event was raised";
    EXPECT_EQ(say(), S_OK);
    EXPECT_EQ((*leaving)->events.size(), 1u);
    EXPECT_EQ((*added)->events.size(), 1u);
}

TEST_F(Events, AHandlerMayGiveUpTheSource) {
    auto sink = ComPointer<EventSink>::adopt(new EventSink);
    bool sink_ended = false;
    sink->ended = &sink_ended;
    DWORD cookie = 0;
    EXPECT_EQ(point->Advise(sink.get(), &cookie), S_OK);
    IDispatch* bare = talker.get();
    sink->handler = [&](const ReceivedEvent&) {
        point = {};
        talker = {};
        sink = {};
        return S_OK;
    };
    VARIANT arguments[] = {plain(1), Variant(u"tak").release()};
    DISPPARAMS parameters{arguments, nullptr, 2, 0};
    EXPECT_EQ(bare->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, &parameters, nullptr, nullptr, nullptr),
              S_OK);
    VariantClear(&arguments[1]);
    EXPECT_TRUE(sink_ended);
}

}  // namespace
}  // namespace tavrix::test
