#pragma once

#include "mail/message_ports.h"
#include "mail/message_record.h"

namespace tavrix::mail {

/// The public class `CMessage`: one mail message. No method raises.
class CMessage {
  public:
    explicit CMessage(MessagePorts ports) : ports_(std::move(ports)) {}

    template <MessageProperty property>
    const base::Text& text() const noexcept {
        return record_[property];
    }
    template <MessageProperty property>
    void set_text(const base::Text& value) {
        record_[property] = value;
    }

    /// The paths of the saved attachments, each preceded by ";".
    const base::Text& Files() const noexcept { return record_.files; }
    /// The length of `MessageText` in characters.
    std::int32_t Size() const noexcept;

    /// Reads the raw message `strMessage`, whose lines end by CR LF, and saves its attachments into
    /// the folder `GM_Katalog`, which ends with "\"; an empty one saves nothing. With
    /// `GM_DoplikuTylkoZałączniki` False it saves the message too, as a file of the name of its
    /// MessageID, and the attachments into a folder of that name. Gives 1 and the number of
    /// attachments; 0, with nothing stored, for a text that has no empty line or beside a settings
    /// file that cannot be read.
    std::int32_t DodajMail(const base::Text& strMessage, const base::Text& GM_Katalog,
                           bool GM_DoplikuTylkoZałączniki) noexcept;

    /// False when DodajMail was ended early by a part that could not be decoded or a file that
    /// could not be written. Hosts are told only how many there were; whoever deletes the message
    /// where it came from has to know.
    bool was_read_to_its_end() const noexcept { return was_read_to_its_end_; }

    /// Fills the message as it came from a server and saves its attachments into `folder`, with or
    /// without "\" at its end; an empty one saves nothing. False for a message that cannot be taken
    /// apart: that is saved as it is. When this returns, every file is on the disk; when one could
    /// not be written it throws base::AutomationError, and the message must be kept where it came
    /// from. With `keep_whole` the message is saved as it is too, which a message of more than a
    /// thousand files always is, and alone.
    bool take(base::ByteView message, const base::Text& folder, bool keep_whole = false);

  private:
    MessagePorts ports_;
    MessageRecord record_;
    bool was_read_to_its_end_ = false;
};

}  // namespace tavrix::mail
