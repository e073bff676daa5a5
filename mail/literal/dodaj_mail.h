#pragma once

#include "mail/literal/boundary_lines.h"
#include "mail/literal/part_header.h"
#include "mail/message_ports.h"
#include "mail/message_record.h"

namespace tavrix::mail {

/// CMessage's own reading of a message: line by line and to the letter, as hosts have known it for
/// years. What it makes of mail that is written otherwise is kept, because hosts rely on it; the
/// other reading is in mime/.
class DodajMailReader {
  public:
    DodajMailReader(MessageRecord& record, const MessagePorts& ports, base::Profile profile);

    /// Reads `message`, whose lines end by CR LF, and saves its files into `folder`, which ends
    /// with "\"; an empty one saves nothing. Only the attachments, or also the message and a folder
    /// for each. Time and memory grow with the message.
    ///
    /// Gives 1 and the number of files, or 0 when `message` has no empty line. Whatever fails ends
    /// the reading, and what was counted until then is the result.
    std::int32_t read(base::TextView message, base::TextView folder,
                      bool only_attachments) noexcept;

    /// False when something ended the reading early: a file that could not be decoded or written.
    bool was_read_to_its_end() const noexcept { return was_read_to_its_end_; }

  private:
    void read_message(base::TextView message);
    void read_header_line(base::TextView line);
    void save_message(base::TextView message);
    void make_folder(base::TextView path);
    void read_parts(base::TextView body);
    /// Gives the boundary line behind the part that begins where `lines` stands.
    std::optional<BoundaryLine> read_part(base::TextView body, Lines& lines);
    /// `end` closes the last line.
    void add_text(const PartHeader& header, base::TextView content, base::TextView end);
    void save_file(const PartHeader& header, base::TextView content);
    base::Bytes decoded_file(const PartHeader& header, base::TextView content) const;
    base::Text decoded_text(const PartHeader& header, base::TextView content) const;

    MessageRecord& record_;
    const MessagePorts& ports_;
    base::Profile profile_;
    BoundaryLines boundaries_;
    base::Text folder_;
    bool only_attachments_ = true;
    /// Of the message: what its own file and folder are called.
    base::Text id_;
    std::int32_t result_ = 0;
    bool was_read_to_its_end_ = false;
};

}  // namespace tavrix::mail
