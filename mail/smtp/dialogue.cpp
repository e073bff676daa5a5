#include "mail/smtp/dialogue.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "base/error.h"

namespace tavrix::mail::smtp {
namespace {

// No name of a machine, which strict servers refuse ("KASA_1") and which is nobody's business.
constexpr std::string_view own_name = "[127.0.0.1]";

bool same_word(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, [](char a, char b) {
        const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? c - 32 : c; };
        return upper(a) == upper(b);
    });
}

std::vector<std::string_view> words_of(std::string_view line) {
    std::vector<std::string_view> words;
    while (!line.empty()) {
        const std::size_t end = std::min(line.find(' '), line.size());
        if (end > 0) words.push_back(line.substr(0, end));
        line.remove_prefix(std::min(end + 1, line.size()));
    }
    return words;
}

// What the server says of an extension: nothing without it, its name first with it.
std::vector<std::string_view> offered(const std::vector<std::string>& offers,
                                      std::string_view extension) {
    for (const std::string& line : offers) {
        const auto words = words_of(line);
        if (!words.empty() && same_word(words.front(), extension)) return words;
    }
    return {};
}

bool has_word(const std::vector<std::string_view>& words, std::string_view word) {
    return std::ranges::any_of(words, [&](std::string_view one) { return same_word(one, word); });
}

// Like base::base64_encode, but no copy stays behind.
void append_base64(base::SecretUtf8& out, std::string_view bytes) {
    constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            bits = bits << 8 | (i < count ? static_cast<unsigned char>(bytes[at + i]) : 0u);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            out += i <= count ? alphabet[bits >> (18 - 6 * i) & 63] : '=';
        }
    }
}

// Where a provider takes no passwords any more, "wrong password" would send people the wrong way.
bool is_refused_by_policy(const base::Text& answer) {
    constexpr base::TextView signs[] = {
        u"5.7.9", u"5.7.14", u"5.7.30", u"5.7.139", u"pplication-specific", u"asic authentication"};
    return std::ranges::any_of(
        signs, [&](base::TextView sign) { return answer.find(sign) != base::Text::npos; });
}

}  // namespace

Dialogue::Dialogue(Envelope envelope, Login login, Greeting greeting)
    : envelope_(std::move(envelope)), login_(std::move(login)), state_(State::greeting) {
    if (greeting == Greeting::past) say(State::hello, "EHLO " + std::string(own_name));
}

Dialogue::Step Dialogue::step() const noexcept {
    if (state_ == State::done) return Step::done;
    if (!command_.empty()) return Step::send_command;
    return state_ == State::message ? Step::send_message : Step::wait;
}

void Dialogue::message_sent() {
    state_ = State::verdict;
}

void Dialogue::take(std::string_view bytes) {
    try {
        replies_.take(bytes);
        while (state_ != State::done) {
            const auto reply = replies_.next();
            if (!reply) return;
            if (state_ == State::message) {
                // Whatever it says, it has not seen the end of the message.
                failure_ = u"Serwer przerwał przyjmowanie wiadomości: " + reply->text();
                state_ = State::done;
            } else if (!command_.empty()) {
                // An answer to what was not said yet would be taken for that of another command.
                broken(u"Serwer odpowiada niepytany: " + reply->text());
            } else {
                on_reply(*reply);
            }
        }
    } catch (const base::AutomationError& error) {
        broken(error.description());
    }
}

void Dialogue::broken(base::TextView why) {
    command_.clear();
    if (state_ == State::verdict) {
        failure_ = u"Nie wiadomo, czy serwer przyjął wiadomość: " + base::Text(why);
    } else if (state_ != State::quit && state_ != State::done) {
        failure_ = why;
    }
    state_ = State::done;
}

void Dialogue::on_reply(const Reply& reply) {
    switch (state_) {
        case State::greeting:
            if (reply.code != 220) return fail(u"Serwer nie przyjął połączenia: " + reply.text());
            return say(State::hello, "EHLO " + std::string(own_name));
        case State::hello:
            return on_hello(reply);
        case State::auth_login:
            if (reply.code != 334) return fail_login(reply);
            return say_secret(State::auth_user, "", login_.user);
        case State::auth_user:
            if (reply.code != 334) return fail_login(reply);
            return say_secret(State::auth_password, "", login_.password);
        case State::auth_plain:
        case State::auth_password:
            if (reply.code != 235) return fail_login(reply);
            return begin_mail();
        case State::mail:
            if (!reply.is_positive()) return fail(u"Serwer odrzucił nadawcę: " + reply.text());
            return ask_for_recipient();
        case State::recipient:
            return on_recipient(reply);
        case State::data:
            if (reply.code != 354) return fail(u"Serwer odrzucił wiadomość: " + reply.text());
            state_ = State::message;
            return;
        case State::verdict:
            if (!reply.is_positive()) return fail(u"Serwer odrzucił wiadomość: " + reply.text());
            delivered_ = true;
            return say(State::quit, "QUIT");
        case State::quit:
            state_ = State::done;
            return;
        case State::message:
        case State::done:
            return;
    }
}

void Dialogue::on_hello(const Reply& reply) {
    if (!reply.is_positive()) return fail(u"Serwer nie zna rozszerzonego SMTP: " + reply.text());
    offers_ = reply.lines;
    const auto ways = offered(offers_, "AUTH");
    // A server that knows no users decides by itself what it takes from whom.
    if (login_.user.empty() || ways.empty()) return begin_mail();
    if (has_word(ways, "PLAIN")) {
        // RFC 4616: no identity but the user's own.
        base::SecretUtf8 message;
        message += '\0';
        message += login_.user.view();
        message += '\0';
        message += login_.password.view();
        return say_secret(State::auth_plain, "AUTH PLAIN ", message);
    }
    if (has_word(ways, "LOGIN")) return say(State::auth_login, "AUTH LOGIN");
    base::Text names;
    for (const std::string_view way : ways) names += u" " + base::from_utf8(way);
    fail(u"Serwer nie przyjmuje logowania hasłem, to konto wymaga OAuth. Serwer oferuje:" + names);
}

void Dialogue::begin_mail() {
    login_.password.clear();
    std::string line = "MAIL FROM:<" + envelope_.sender + ">";
    if (const auto size = offered(offers_, "SIZE"); !size.empty()) {
        std::uint64_t most = 0;
        if (size.size() > 1) std::from_chars(size[1].data(), size[1].data() + size[1].size(), most);
        if (most != 0 && envelope_.message_bytes > most) {
            return fail(u"Wiadomość ma " +
                        base::to_decimal(static_cast<std::int64_t>(envelope_.message_bytes)) +
                        u" bajtów, a serwer przyjmuje najwyżej " +
                        base::to_decimal(static_cast<std::int64_t>(most)) + u".");
        }
        line += " SIZE=" + std::to_string(envelope_.message_bytes);
    }
    if (envelope_.needs_utf8) {
        if (offered(offers_, "SMTPUTF8").empty()) {
            return fail(u"Serwer nie przyjmuje adresów z literami spoza ASCII przed znakiem @.");
        }
        line += " SMTPUTF8";
    }
    if (offered(offers_, "DSN").empty()) envelope_.notify.clear();
    // The reports need not bring the whole message back.
    if (!envelope_.notify.empty()) line += " RET=HDRS";
    say(State::mail, line);
}

void Dialogue::ask_for_recipient() {
    std::string line = "RCPT TO:<" + envelope_.recipients[recipient_] + ">";
    if (!envelope_.notify.empty()) line += " NOTIFY=" + envelope_.notify;
    say(State::recipient, line);
}

// All are asked for, so that all who are refused can be named.
void Dialogue::on_recipient(const Reply& reply) {
    if (!reply.is_positive()) {
        if (!refused_.empty()) refused_ += u"; ";
        refused_ += base::from_utf8(envelope_.recipients[recipient_]) + u": " + reply.text();
    }
    // 421: the server is closing.
    const bool goes_on = ++recipient_ < envelope_.recipients.size() && reply.code != 421;
    if (goes_on) return ask_for_recipient();
    if (!refused_.empty()) return fail(u"Serwer odrzucił adresata " + refused_);
    say(State::data, "DATA");
}

void Dialogue::fail_login(const Reply& reply) {
    base::Text why = u"Serwer odrzucił logowanie: " + reply.text();
    if (is_refused_by_policy(why)) why += u" (to konto wymaga OAuth lub hasła aplikacji)";
    fail(std::move(why));
}

void Dialogue::fail(base::Text why) {
    failure_ = std::move(why);
    login_.password.clear();
    say(State::quit, "QUIT");
}

void Dialogue::say(State next, std::string_view line) {
    state_ = next;
    command_ = base::SecretUtf8(line);
    command_ += "\r\n";
}

void Dialogue::say_secret(State next, std::string_view before, const base::SecretUtf8& secret) {
    state_ = next;
    command_ = base::SecretUtf8(before);
    append_base64(command_, secret.view());
    command_ += "\r\n";
}

}  // namespace tavrix::mail::smtp
