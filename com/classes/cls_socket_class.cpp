#include "com/classes/classes.h"

#include "com/classes/compositions.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"

namespace tavrix::com {
namespace {

using mail::clsSocket;
using mail::SocketEvents;

// DISPIDs are published: append only.
constexpr auto cls_socket_members = members(
    method<&clsSocket::OpeneSocket>(
        1, u"OpeneSocket",
        u"Łączy z adresem host:port, z TLS, gdy ssl nie jest zerem; 1, gdy się udało, inaczej 0.",
        by_reference(u"ssl"), by_reference(u"maxWaitMillisec"), by_reference(u"Adress")),
    method<&clsSocket::CloseSocket>(2, u"CloseSocket", u"Zamyka połączenie."),
    method<&clsSocket::SendString>(3, u"SendString", u"Wysyła tekst w stronie kodowej systemu.",
                                   by_reference(u"s")),
    method<&clsSocket::ReceiveString>(
        4, u"ReceiveString",
        u"Tekst, który przyszedł; pusty, gdy nic nie przyszło albo połączenia już nie ma."));

constexpr auto cls_socket_event_rows = members(
    event<&SocketEvents::BinaryData>(1, u"BinaryData", u"Przyszły dane: bajty, jakie przyszły.",
                                     by_reference(u"Data")),
    event<&SocketEvents::AbortCheck>(2, u"AbortCheck",
                                     u"Podczas czekania, co 100 ms; Abort = True je przerywa.",
                                     by_reference(u"Abort")),
    event<&SocketEvents::TextData>(3, u"TextData", u"Przyszły dane: tekst, jaki przyszedł.",
                                   by_value(u"Text")),
    event<&SocketEvents::ProgressInfo>(4, u"ProgressInfo", u"Co się dzieje, na przykład Połączono.",
                                       by_value(u"Name"), by_value(u"Value")),
    event<&SocketEvents::PercentDone>(
        5, u"PercentDone", u"Ile długiego tekstu wysłano; Abort = True przerywa wysyłanie.",
        by_value(u"Percent"), by_reference(u"Abort")),
    event<&SocketEvents::TaskCompleted>(6, u"TaskCompleted", u"Metoda skończyła pracę.",
                                        by_value(u"Success")));

constexpr EventTable cls_socket_events = {
    .interface_id = guid("D7EFD24E-AC81-4DBF-A0D9-CD71DFC3386D"),
    .help = u"Tavrix: zdarzenia gniazda",
    .members = cls_socket_event_rows,
};

consteval const Member* row(base::TextView name) {
    return row_of(cls_socket_event_rows, name);
}

/// Raises to the hosts' sinks what the portable class tells.
class RaisedSocketEvents final : public SocketEvents {
  public:
    explicit RaisedSocketEvents(std::shared_ptr<EventSinks> sinks) : sinks_(std::move(sinks)) {}

    void method_begins() override { had_listeners_ = has_listeners(); }
    void BinaryData(const base::Bytes& Data) override { raise(row(u"BinaryData"), Data); }
    void AbortCheck(bool& Abort) override {
        raise(row(u"AbortCheck"), Abort);
        // A host that let go of the object in a handler cannot be asked any more, and waits.
        if (had_listeners_ && !has_listeners()) Abort = true;
    }
    void TextData(const base::Text& Text) override { raise(row(u"TextData"), Text); }
    void ProgressInfo(const base::Text& Name, const base::Text& Value) override {
        raise(row(u"ProgressInfo"), Name, Value);
    }
    void PercentDone(std::int32_t Percent, bool& Abort) override {
        raise(row(u"PercentDone"), Percent, Abort);
    }
    void TaskCompleted(bool Success) override { raise(row(u"TaskCompleted"), Success); }

  private:
    template <typename... Arguments>
    void raise(const Member* event, Arguments&... arguments) {
        sinks_->fire(*event, arguments...);
    }

    bool has_listeners() const noexcept { return !sinks_->connections().empty(); }

    std::shared_ptr<EventSinks> sinks_;
    bool had_listeners_ = false;
};

constexpr ClassTable cls_socket_table = {
    .class_id = guid("0BC4E5D1-D904-4E1E-ADB1-3C809597E8BE"),
    .interface_id = guid("0FB68367-C86A-4775-94AF-1A5EE650DD4D"),
    .name = u"clsSocket",
    .help = u"Tavrix: połączenie TCP, także z TLS",
    .members = cls_socket_members,
    .events = &cls_socket_events,
};

}  // namespace

constexpr CreatableClass cls_socket_class = {
    cls_socket_table, [] {
        auto sinks = std::make_shared<EventSinks>(cls_socket_events);
        auto socket = compose_cls_socket(std::make_unique<RaisedSocketEvents>(sinks));
        return make_object(cls_socket_table, std::move(socket), std::move(sinks));
    }};

}  // namespace tavrix::com
