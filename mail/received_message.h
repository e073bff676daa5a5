#pragma once

#include "mail/message_ports.h"
#include "mail/message_record.h"

namespace tavrix::mail {

/// What CMessage::take does; see there. Of a field that stands several times the first counts, of
/// Received the last. Equal names of files are numbered, and a file of another message that has the
/// same name is left alone.
bool take_received_message(base::ByteView message, const base::Text& folder, bool keep_whole,
                           const MessagePorts& ports, MessageRecord& record);

}  // namespace tavrix::mail
