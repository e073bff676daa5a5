#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "mail/socket_events.h"
#include "ports/code_page.h"
#include "ports/connection_settings.h"
#include "ports/stream.h"

namespace tavrix::mail {

/// Everything outside that the class reaches. The references outlive the instance.
struct SocketPorts {
    std::unique_ptr<ports::Stream> stream;
    const ports::CodePage& code_page;
    const ports::ConnectionSettings& settings;
    SocketEvents& events;
    /// Called before a connection is made; throws base::AutomationError with what is wrong with
    /// the settings file. Empty where the settings are there from the start.
    std::function<void()> read_settings{};
};

/// The public class `clsSocket`: one connection that carries texts, as bytes of the system's ANSI
/// code page. It adds no line ends and looks for none.
///
/// No method raises an error: ProgressInfo gives the reason of a failure, TaskCompleted says that
/// there was one. Handlers of BinaryData, TextData and TaskCompleted may call every method;
/// handlers of the other events, which come in the middle of a method, may call CloseSocket, which
/// ends that method, and find any other method failing, without an event. A CloseSocket that a
/// handler of TaskCompleted calls raises none of its own, because it would never end.
class clsSocket {
  public:
    explicit clsSocket(SocketPorts ports);

    /// Connects to `Adress`, "host:port" or "[IPv6 address]:port", through TLS with its certificate
    /// verified when `ssl` is not 0. Closes an earlier connection. `maxWaitMillisec` limits, in
    /// milliseconds, the connecting and later each sending and receiving; 0 or less means the
    /// settings' time-outs. Gives 1 when the connection stands, otherwise 0.
    std::int32_t OpeneSocket(std::int32_t ssl, std::int32_t maxWaitMillisec,
                             const base::Text& Adress);
    /// Ends the connection; succeeds without one too.
    void CloseSocket();
    /// Sends all of `s`; a character that the code page lacks goes as the system's replacement.
    /// Fails when the other side takes nothing for the time-out, and closes the connection then:
    /// half a text may be on its way.
    void SendString(const base::Text& s);
    /// Waits for the first byte and gives everything that comes without a pause of 20 ms from
    /// then on, until the time-out: a long text may come in several calls. Gives the empty text
    /// when nothing came, when the connection is at its end, and when more than 64 MiB come at
    /// once. Of the failures, only a wait in which nothing came leaves the connection open. One
    /// that breaks behind some bytes gives these, and the reason to the next method.
    base::Text ReceiveString();

  private:
    template <typename Task>
    bool run(Task task);
    void complete(bool success);
    void connect(bool tls, const base::Text& address);
    void send(base::ByteView bytes);
    void send_piece(base::ByteView piece);
    void require_connection();
    base::Bytes receive();
    bool receive_more(base::Bytes& received, std::chrono::microseconds& left);
    /// Counts time that a wait took and asks the host about every 100 ms; true when it wants to
    /// stop, or a handler has closed the connection.
    bool stopped_after(std::chrono::microseconds waited);
    void close();
    void tell(base::TextView name, const base::Text& value);

    SocketPorts ports_;
    /// Of the connection that stands; empty when there is none.
    base::Text address_;
    /// Why the last connection broke, until a method has failed for it.
    base::Text broken_because_;
    std::chrono::milliseconds connect_timeout_;
    std::chrono::milliseconds transfer_timeout_;
    std::chrono::microseconds since_check_{0};
    bool busy_ = false;
    bool completing_ = false;
    /// CloseSocket was called since the method began.
    bool closed_by_host_ = false;
};

}  // namespace tavrix::mail
