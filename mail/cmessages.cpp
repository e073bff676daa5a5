#include "mail/cmessages.h"

#include "base/error.h"

namespace tavrix::mail {
namespace {

[[noreturn]] void refuse(base::TextView method) {
    throw base::AutomationError(base::ErrorNumber::subscript, u"CMessages." + base::Text(method),
                                u"Nie ma takiej wiadomości");
}

}  // namespace

void CMessages::Add(std::shared_ptr<CMessage> message, base::Text key) {
    messages_.push_back({std::move(key), std::move(message)});
}

std::size_t CMessages::place_of(std::int32_t index, base::TextView method) const {
    if (index < 1 || index > Count()) refuse(method);
    return static_cast<std::size_t>(index) - 1;
}

std::size_t CMessages::place_of(base::TextView key, base::TextView method) const {
    for (std::size_t place = messages_.size(); place-- > 0 && !key.empty();) {
        if (base::equal_case_blind(messages_[place].key, key)) return place;
    }
    refuse(method);
}

const std::shared_ptr<CMessage>& CMessages::Item(std::int32_t index) const {
    return messages_[place_of(index, u"Item")].message;
}

const std::shared_ptr<CMessage>& CMessages::Item(base::TextView key) const {
    return messages_[place_of(key, u"Item")].message;
}

void CMessages::Remove(std::int32_t index) {
    messages_.erase(messages_.begin() + static_cast<std::ptrdiff_t>(place_of(index, u"Remove")));
}

void CMessages::Remove(base::TextView key) {
    messages_.erase(messages_.begin() + static_cast<std::ptrdiff_t>(place_of(key, u"Remove")));
}

}  // namespace tavrix::mail
