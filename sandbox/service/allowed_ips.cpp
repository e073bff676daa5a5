#include "sandbox/service/allowed_ips.h"

#include <algorithm>

#include "sandbox/basics/text.h"
#include "sandbox/exchange/body.h"

namespace tavrix::sandbox {
namespace {

constexpr std::size_t most_of_a_kind = 10;

/// A number below a limit in digits, without leading zeros.
std::optional<std::uint32_t> small_number(std::string_view text, std::uint32_t limit) {
    const auto number = number_of<std::uint32_t>(text);
    if (!number || *number >= limit || (text.size() > 1 && text[0] == '0')) return std::nullopt;
    return number;
}

std::optional<std::uint32_t> read_address(std::string_view text) {
    std::uint32_t address = 0;
    for (int part = 0; part < 4; ++part) {
        const std::size_t end = part < 3 ? text.find('.') : text.size();
        if (end == std::string_view::npos) return std::nullopt;
        const auto number = small_number(text.substr(0, end), 256);
        if (!number) return std::nullopt;
        address = address << 8 | *number;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return address;
}

std::optional<IpRange> read_single(std::string_view text) {
    const auto address = read_address(text);
    return address ? std::optional<IpRange>({*address, *address}) : std::nullopt;
}

std::optional<IpRange> read_range(std::string_view text) {
    const std::size_t hyphen = text.find('-');
    if (hyphen == std::string_view::npos) return std::nullopt;
    const auto first = read_address(text.substr(0, hyphen)),
               last = read_address(text.substr(hyphen + 1));
    return first && last && *first <= *last ? std::optional<IpRange>({*first, *last})
                                            : std::nullopt;
}

std::optional<IpRange> read_network(std::string_view text) {
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos) return std::nullopt;
    const auto address = read_address(text.substr(0, slash)),
               bits = small_number(text.substr(slash + 1), 33);
    if (!address || !bits) return std::nullopt;
    const std::uint32_t inside = *bits == 32 ? 0 : UINT32_MAX >> *bits;
    return IpRange{*address & ~inside, *address | inside};
}

}  // namespace

IpRanges read_allowed_ips(const Json& body) {
    IpRanges ranges;
    if (given(body, "authorizationPolicy") == nullptr) return ranges;
    const Json& policy = required_object(body, "authorizationPolicy");
    if (given(policy, "allowedIps") == nullptr) return ranges;
    const Json& lists = required_object(policy, "allowedIps");
    const auto read = [&](const char* name, auto read_one) {
        if (given(lists, name) == nullptr) return;
        const auto texts = text_list(lists, name);
        if (texts.size() > most_of_a_kind) throw unknown_value(name);
        for (const std::string& text : texts) {
            const auto range = read_one(text);
            if (!range) throw unknown_value(name);
            ranges.push_back(*range);
        }
    };
    read("ip4Addresses", read_single);
    read("ip4Ranges", read_range);
    read("ip4Masks", read_network);
    return ranges;
}

bool allows(const IpRanges& allowed, std::string_view remote_address) {
    if (allowed.empty()) return true;
    // An IPv4 client of a socket that takes both.
    constexpr std::string_view mapped = "::ffff:";
    if (remote_address.starts_with(mapped)) remote_address.remove_prefix(mapped.size());
    const auto address = read_address(remote_address);
    return address && std::any_of(allowed.begin(), allowed.end(), [&](const IpRange& range) {
               return range.first <= *address && *address <= range.second;
           });
}

}  // namespace tavrix::sandbox
