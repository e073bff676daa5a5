#pragma once

#include <cstdint>

#include "base/text.h"

namespace tavrix::mail {

/// What the class `clsSocket` tells its host while it works. Named as hosts know the events. The
/// listener throws nothing, and may call the socket: see clsSocket.
class SocketEvents {
  public:
    virtual ~SocketEvents() = default;

    /// No event, and the first call of each method: whoever listens now is to be asked while it
    /// waits.
    virtual void method_begins() {}

    /// Everything that one ReceiveString brought, as it came.
    virtual void BinaryData(const base::Bytes& Data) = 0;
    /// Comes about every 100 ms of a wait; Abort = True ends it.
    virtual void AbortCheck(bool& Abort) = 0;
    /// The same as BinaryData, as the text that ReceiveString gives.
    virtual void TextData(const base::Text& Text) = 0;
    /// What happens, in Polish: Name is one of socket_progress, Value an address, a number of bytes
    /// or the reason of a failure.
    virtual void ProgressInfo(const base::Text& Name, const base::Text& Value) = 0;
    /// After each 64 KiB of a longer text that is sent; Abort = True stops there.
    virtual void PercentDone(std::int32_t Percent, bool& Abort) = 0;
    /// The last event of each method that was not refused because another was at work, but for a
    /// CloseSocket of a handler of this event.
    virtual void TaskCompleted(bool Success) = 0;
};

/// The names that ProgressInfo uses.
namespace socket_progress {
inline constexpr base::TextView connecting = u"Łączenie";  // the address
inline constexpr base::TextView connected = u"Połączono";  // the address
inline constexpr base::TextView sent = u"Wysłano";         // bytes
inline constexpr base::TextView received = u"Odebrano";    // bytes, so far in this call
inline constexpr base::TextView closed = u"Zamknięto";     // the address
inline constexpr base::TextView failed = u"Błąd";          // the reason
}  // namespace socket_progress

}  // namespace tavrix::mail
