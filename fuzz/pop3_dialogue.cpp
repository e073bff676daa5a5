// What a mailbox's server says, cut into arrivals by its own first bytes, to both dialogues.
#include <cstdlib>

#include "fuzz/fuzz_target.h"
#include "mail/pop3/dialogue.h"
#include "mail/pop3/run_result.h"
#include "ports/native/adapters.h"

using namespace tavrix;

namespace {

mail::MailboxAccount account(bool delete_stored) {
    mail::MailboxAccount account;
    account.user = base::SecretBytes(base::bytes_of("jan"));
    account.password = base::SecretBytes(base::bytes_of("tajne"));
    account.delete_stored = delete_stored;
    return account;
}

// Nothing is deleted that was not kept, and nothing is said behind the end.
class Listener {
  public:
    explicit Listener(mail::Pop3Dialogue::Stored outcome) : outcome_(outcome) {}

    void hear(mail::Pop3Dialogue& dialogue, mail::Pop3Dialogue::Actions actions) {
        const std::string_view said = base::chars_of(actions.send.view());
        if (was_over_ && !said.empty()) std::abort();
        if (said.find("DELE") != said.npos &&
            (!kept_ || outcome_ != mail::Pop3Dialogue::Stored::kept)) {
            std::abort();
        }
        was_over_ = actions.over || was_over_;
        if (was_over_ != dialogue.over()) std::abort();
        if (!actions.store) return;
        if (kept_) std::abort();
        kept_ = true;
        hear(dialogue, dialogue.stored(outcome_));
    }

  private:
    mail::Pop3Dialogue::Stored outcome_;
    bool kept_ = false;
    bool was_over_ = false;
};

}  // namespace

std::vector<std::string> fuzz::seeds() {
    const std::string login = "+OK a\r\n+OK\r\n+OK\r\n";
    return {
        "\x07@" + login + "+OK 1 320\r\n+OK 20 octets\r\nA: b\r\n\r\n..x\r\n.\r\n+OK\r\n+OK\r\n",
        "\xFF\x01" + login + "+OK 2 9\r\n+OK\r\n.\r\n-ERR\r\n",
        "\x03\x02" + login + "+OK 0 0\r\n",
        "\x10\x03+OK\r\n-ERR [AUTH] oauth\r\n",
        "\x20\x04" + login + "+OK -1 99999999999999999999\r\n+OK\r\n",
        "\x05\x05" + login + "+OK 2147483648 1\r\n-ERR [IN-USE]\r\n",
    };
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto code_page = ports::make_native_code_page();
    static ports::NoTrace trace;
    if (size < 2) return 0;
    const std::size_t at_once = data[0] % 64u + 1;
    const auto outcome = static_cast<mail::Pop3Dialogue::Stored>(data[1] & 3);
    for (const mail::RetrievalForm form :
         {mail::RetrievalForm::manager, mail::RetrievalForm::socket}) {
        mail::Pop3Dialogue dialogue(form, account((data[1] & 4) == 0), *code_page, trace);
        Listener listener(outcome);
        base::ByteView rest(data + 2, size - 2);
        while (!rest.empty()) {
            const base::ByteView arrival = rest.first(std::min(at_once, rest.size()));
            listener.hear(dialogue, dialogue.receive(arrival));
            rest = rest.subspan(arrival.size());
        }
        listener.hear(dialogue,
                      (data[1] & 8) == 0 ? dialogue.ended() : dialogue.broken(10054, u"x"));
        if (!dialogue.over()) std::abort();
        if (dialogue.run_result() > mail::run_result::stored) std::abort();
        if (dialogue.run_result() < 0 && dialogue.failure().empty()) std::abort();
    }
    return 0;
}
