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

/// The public class `CMessage`: one mail message. No method raises.
class CMessage {
  public:
    template <MessageProperty property>
    const base::Text& text() const noexcept {
        return texts_[static_cast<std::size_t>(property)];
    }
    template <MessageProperty property>
    void set_text(const base::Text& value) {
        texts_[static_cast<std::size_t>(property)] = value;
    }

    /// The paths of the saved attachments, each preceded by ";".
    const base::Text& Files() const noexcept { return files_; }
    /// The length of `MessageText` in characters.
    std::int32_t Size() const noexcept;

    /// Reads the raw message `strMessage` and saves its attachments into the folder `GM_Katalog`.
    /// Not built yet: 0, the answer to a message that is none.
    std::int32_t DodajMail(const base::Text& strMessage, const base::Text& GM_Katalog,
                           bool GM_DoplikuTylkoZałączniki) noexcept;

  private:
    std::array<base::Text, message_property_count> texts_;
    base::Text files_;
};

}  // namespace tavrix::mail
