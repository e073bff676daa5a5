#include "mail/outgoing/mailbox.h"

#include <algorithm>

#include "base/error.h"
#include "mail/outgoing/domain_name.h"

namespace tavrix::mail::outgoing {
namespace {

// RFC 5321, section 4.5.3.1: 64 octets, "@", 255 octets.
constexpr std::size_t longest_address = 320;

[[noreturn]] void refuse_address(base::TextView text) {
    base::Text shown(text.substr(0, longest_address));
    std::ranges::replace_if(
        shown, [](char16_t c) { return c < 0x20 || c == 0x7F; }, u' ');
    throw base::AutomationError(base::ErrorNumber::component_failed, u"Mail",
                                u"Nieprawidłowy adres: " + shown);
}

bool is_control(char16_t c) {
    return c < 0x20 || (c >= 0x7F && c <= 0x9F);
}

bool is_quoted(base::TextView text) {
    return text.size() >= 2 && text.front() == u'"' && text.back() == u'"';
}

base::Text unquoted(base::TextView name) {
    if (!is_quoted(name)) return base::Text(name);
    base::Text out;
    for (std::size_t i = 1; i + 1 < name.size(); ++i) {
        if (name[i] == u'\\' && i + 2 < name.size()) ++i;
        out += name[i];
    }
    return out;
}

// A dot-atom, but that dots may stand where they like, as some providers allow; or a quoted string
// (RFC 5321, section 4.1.2).
bool is_local_part(base::TextView local) {
    if (is_quoted(local)) {
        const base::TextView inside = local.substr(1, local.size() - 2);
        return inside.find_first_of(u"\"\\") == base::TextView::npos;
    }
    return !local.empty() && local.find_first_of(u" ()<>,;:\\\"[]@\x00A0") == base::TextView::npos;
}

}  // namespace

bool Mailbox::is_ascii() const noexcept {
    return std::ranges::all_of(address,
                               [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string_view Mailbox::domain() const noexcept {
    const std::size_t at = address.rfind('@');
    return at == std::string::npos ? std::string_view() : std::string_view(address).substr(at + 1);
}

Mailbox parse_mailbox(base::TextView text) {
    if (std::ranges::any_of(text, is_control)) refuse_address(text);
    Mailbox mailbox;
    base::TextView address = base::trim(text);
    if (address.ends_with(u'>')) {
        const std::size_t open = address.rfind(u'<');
        if (open == base::TextView::npos) refuse_address(text);
        mailbox.name = unquoted(base::trim(address.substr(0, open)));
        address = base::trim(address.substr(open + 1, address.size() - open - 2));
    }
    const std::size_t at = address.rfind(u'@');
    const base::TextView local = address.substr(0, at);
    if (!is_local_part(local)) refuse_address(text);
    mailbox.address = base::to_utf8(local);
    // Servers know their own users without a domain.
    if (at != base::TextView::npos) {
        const std::string domain = domain_for_servers(address.substr(at + 1));
        if (domain.empty()) refuse_address(text);
        mailbox.address += '@' + domain;
    }
    if (mailbox.address.size() > longest_address) refuse_address(text);
    return mailbox;
}

std::vector<Mailbox> parse_mailboxes(base::TextView list, base::TextView separators) {
    std::vector<Mailbox> mailboxes;
    // One without its partner quotes nothing.
    const bool quotes_count = std::ranges::count(list, u'"') % 2 == 0;
    bool quoted = false;
    for (std::size_t begin = 0, at = 0; at <= list.size(); ++at) {
        const bool at_end = at == list.size();
        if (!at_end && list[at] == u'"' && quotes_count) quoted = !quoted;
        if (!at_end && (quoted || separators.find(list[at]) == base::TextView::npos)) continue;
        const base::TextView one = list.substr(begin, at - begin);
        if (!base::trim(one).empty()) mailboxes.push_back(parse_mailbox(one));
        begin = at + 1;
    }
    return mailboxes;
}

}  // namespace tavrix::mail::outgoing
