#pragma once

#include <memory>
#include <vector>

#include "mail/cmessage.h"

namespace tavrix::mail {

/// The messages of one mailbox run. The places count from 1, as hosts count; keys are compared
/// without regard to letter case.
class CMessages {
  public:
    void Clear() noexcept { messages_.clear(); }
    /// A key may stand several times: each connection counts its messages anew.
    void Add(std::shared_ptr<CMessage> message, base::Text key = {});
    std::int32_t Count() const noexcept { return static_cast<std::int32_t>(messages_.size()); }
    /// Throws base::AutomationError where no message is. Of an equal key the last one.
    const std::shared_ptr<CMessage>& Item(std::int32_t index) const;
    const std::shared_ptr<CMessage>& Item(base::TextView key) const;
    void Remove(std::int32_t index);
    void Remove(base::TextView key);

    struct Entry {
        base::Text key;
        std::shared_ptr<CMessage> message;
    };
    // Enumeration, in the order of adding.
    auto begin() const noexcept { return messages_.begin(); }
    auto end() const noexcept { return messages_.end(); }

  private:
    // `method` asks; its name is in the error.
    std::size_t place_of(std::int32_t index, base::TextView method) const;
    std::size_t place_of(base::TextView key, base::TextView method) const;

    std::vector<Entry> messages_;
};

}  // namespace tavrix::mail
