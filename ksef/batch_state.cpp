#include "ksef/batch_state.h"

#include "base/base64.h"
#include "base/error.h"

namespace tavrix::ksef {
namespace {

using base::SecretUtf8;

// 50 parts with addresses of a few hundred bytes.
constexpr std::size_t longest_state_bytes = 1 << 20;
constexpr std::string_view sent_mark = "sent ";

[[noreturn]] void fail_unreadable(const base::Text& path) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"KseF_comm",
                                u"Plik stanu wysyłki jest uszkodzony: " + path);
}

// The lines of the file: the session's description, the key, the parts' addresses, then a line for
// each part that was sent.
Body description_of(const BatchState& state) {
    Body body;
    body["service"] = base::to_utf8(state.service);
    body["reference"] = state.reference;
    body["iv"] = base::base64_encode(state.session_key.iv);
    body["bytes"] = state.package.bytes;
    for (std::size_t i = 0; i < state.addresses.size(); ++i) {
        const PackagePart& part = state.package.parts[i];
        const PartAddress& address = state.addresses[i];
        Body entry;
        entry["offset"] = part.offset;
        entry["bytes"] = part.plain_bytes;
        entry["hash"] = part.encrypted_hash;
        entry["method"] = address.method;
        entry["headers"] = Body::array();
        for (const auto& [name, value] : address.headers) entry["headers"].push_back({name, value});
        body["parts"].push_back(std::move(entry));
    }
    return body;
}

void write_line(ports::FileWriter& file, std::string_view line) {
    file.write(base::bytes_of(line));
    file.write(base::bytes_of("\n"));
}

class Lines {
  public:
    explicit Lines(std::string_view text) : text_(text) {}
    bool at_end() const { return text_.empty(); }
    std::string_view next() {
        const std::size_t end = std::min(text_.find('\n'), text_.size());
        const std::string_view line = text_.substr(0, end);
        text_.remove_prefix(std::min(end + 1, text_.size()));
        return line;
    }

  private:
    std::string_view text_;
};

BatchState state_of(std::string_view text) {
    Lines lines(text);
    const Json description = Json::parse(lines.next());
    BatchState state;
    state.service = base::from_utf8(description.at("service").get<std::string>());
    state.reference = description.at("reference");
    state.session_key.iv =
        base::base64_decode(description.at("iv").get<std::string>()).value_or(base::Bytes());
    state.session_key.key =
        base::take_secret(base::base64_decode(lines.next()).value_or(base::Bytes()));
    state.package.bytes = description.at("bytes");
    for (const Json& part : description.at("parts")) {
        state.package.parts.push_back({part.at("offset"), part.at("bytes"), part.at("hash")});
        PartAddress& address = state.addresses.emplace_back();
        address.method = part.at("method");
        address.url = SecretUtf8(lines.next());
        for (const Json& header : part.at("headers"))
            address.headers.push_back({header.at(0), header.at(1)});
    }
    while (!lines.at_end()) {
        const std::string_view line = lines.next();
        if (line.starts_with(sent_mark))
            state.addresses.at(std::stoul(std::string(line.substr(sent_mark.size())))).sent = true;
    }
    return state;
}

}  // namespace

void write_state(ports::DataFiles& files, const base::Text& path, const BatchState& state) {
    std::string key = base::base64_encode(state.session_key.key.view());
    const base::SecretUtf8 secret_key((std::string_view(key)));
    base::wipe(key.data(), key.size());
    const auto file = files.create(path, ports::Readers::owner);
    write_line(*file, description_of(state).dump());
    write_line(*file, secret_key.view());
    for (const PartAddress& address : state.addresses) write_line(*file, address.url.view());
    file->keep();
}

void add_sent_part(ports::DataFiles& files, const base::Text& path, std::size_t part) {
    files.append(path, base::bytes_of(std::string(sent_mark) + std::to_string(part) + "\n"));
}

std::optional<BatchState> read_state(ports::DataFiles& files, const base::Text& path) {
    if (path.empty() || !files.is_file(path)) return std::nullopt;
    const base::SecretBytes text =
        base::take_secret(ports::read_whole(files, path, longest_state_bytes));
    try {
        return state_of(base::chars_of(text.view()));
    } catch (const base::AutomationError&) {
        throw;
    } catch (const std::exception&) {
        fail_unreadable(path);
    }
}

}  // namespace tavrix::ksef
