#pragma once

#include <array>
#include <cstdint>

#include "base/text.h"

namespace tavrix::mail {

/// The texts of a message that a host reads and sets, by the names it knows them under.
enum class MessageProperty : std::size_t {
    Headers,
    MessageBody,
    MessageText,
    Encrypted,
    Comments,
    Keywords,
    References,
    InReplyTo,
    BCC,
    CC,
    sender,
    ReplyTo,
    Subject,
    From,
    MessageTo,
    MessageID,
    SendDate,
    Received,
    ReturnPath,
};
inline constexpr std::size_t message_property_count = 19;
static_assert(static_cast<std::size_t>(MessageProperty::ReturnPath) + 1 == message_property_count);

/// The field of a message's header that fills a property.
struct HeaderProperty {
    /// In lower case.
    base::TextView name;
    MessageProperty property;
};
inline constexpr HeaderProperty header_properties[] = {
    {u"return-path", MessageProperty::ReturnPath},
    {u"received", MessageProperty::Received},
    {u"date", MessageProperty::SendDate},
    {u"message-id", MessageProperty::MessageID},
    {u"to", MessageProperty::MessageTo},
    {u"from", MessageProperty::From},
    {u"subject", MessageProperty::Subject},
    {u"reply-to", MessageProperty::ReplyTo},
    {u"sender", MessageProperty::sender},
    {u"cc", MessageProperty::CC},
    {u"bcc", MessageProperty::BCC},
    {u"in-reply-to", MessageProperty::InReplyTo},
    {u"references", MessageProperty::References},
    {u"keywords", MessageProperty::Keywords},
    {u"comments", MessageProperty::Comments},
    {u"encrypted", MessageProperty::Encrypted},
};

/// What is known of one message.
struct MessageRecord {
    std::array<base::Text, message_property_count> texts;
    /// The paths of the saved attachments, each preceded by ";".
    base::Text files;

    base::Text& operator[](MessageProperty property) noexcept {
        return texts[static_cast<std::size_t>(property)];
    }
    const base::Text& operator[](MessageProperty property) const noexcept {
        return texts[static_cast<std::size_t>(property)];
    }
};

}  // namespace tavrix::mail
