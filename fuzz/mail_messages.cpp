// Both readings of a message, under both profiles, with a disk that keeps to itself what is
// written.
#include <cstdlib>

#include "base/error.h"
#include "fuzz/fuzz_target.h"
#include "mail/cmessage.h"
#include "mail/mime/file_name.h"
#include "ports/native/adapters.h"

using namespace tavrix;

namespace {

constexpr base::TextView folder = u"C:\\in\\";

// Nothing may be written outside the folder, and not a second file for each byte.
class Watch final : public ports::FileStore {
  public:
    void make_folder(base::TextView path) override { look(path, 2); }
    void write(base::TextView path, base::ByteView) override { look(path, 1); }
    void overwrite(base::TextView path, base::ByteView) override { look(path, 2); }
    bool write_new(base::TextView path, base::ByteView) override {
        look(path, 1);
        return ++count_ % 5 != 0;
    }

  private:
    // `path` is the folder and as many names as `deepest`, each of them harmless.
    static void look(base::TextView path, std::size_t deepest) {
        if (path == folder.substr(0, folder.size() - 1)) return;
        if (!path.starts_with(folder)) std::abort();
        std::size_t depth = 0;
        for (const base::Text& name : base::split(path.substr(folder.size()), u'\\')) {
            if (name.empty()) continue;
            if (++depth > deepest || harmless(name) != name) std::abort();
        }
    }
    static base::Text harmless(const base::Text& name) { return mail::harmless_file_name(name); }

    int count_ = 0;
};

class NoonClock final : public ports::Clock {
  public:
    base::DateTime now_local() override { return {2026, 11, 22, 12, 0, 0}; }
    std::chrono::milliseconds steady_now() override { return {}; }
    void sleep(std::chrono::milliseconds) override {}
};

}  // namespace

std::vector<std::string> fuzz::seeds() {
    return {
        "Subject: =?utf-8?B?WmHFvMOzxYLEhw==?=\r\nContent-Type: multipart/mixed;\r\n "
        "boundary=\"abc\"\r\n"
        "Message-ID: <1@x>\r\n\r\n--abc\r\nContent-Type: text/plain; "
        "charset=iso-8859-2\r\n\r\nZa=BF=F3\r\n"
        "--abc\r\nContent-Type: application/pdf; name=\"a.pdf\"\r\nContent-Transfer-Encoding: "
        "base64\r\n"
        "Content-Disposition: attachment; filename=\"a.pdf\"\r\n\r\nQUJDRA==\r\n--abc--\r\n",
        "Content-Type: multipart/alternative; boundary=b\n\n--b\nContent-Type: multipart/related; "
        "boundary=c\n\n"
        "--c\nContent-Type: text/html; format=flowed\nContent-Transfer-Encoding: "
        "quoted-printable\n\n=C5=82=\n x\n"
        "--c--\n--b\nContent-Type: message/rfc822; name*1*=%C5%82; "
        "name*0*=utf-8''..\\\\\n\nSubject: x\n\n--b--\n",
        "X: y\r\n\r\n------=_Next\r\nContent-Type: text/xml;\r\n "
        "name=\"CON\"\r\n\r\n\r\n=\r\n--0__\r\n",
        "Content-Type: x/y; name=\"=?cp852?Q?=88/?=\"\nContent-Transfer-Encoding: "
        "x-uuencode\n\nbegin 644 u\n#0V%T\nend\n",
    };
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto code_page = ports::make_native_code_page();
    static ports::NoTrace trace;
    static NoonClock clock;
    Watch store;
    const base::ByteView bytes(data, size);
    mail::CMessage received({store, clock, *code_page, trace});
    received.take(bytes, base::Text(folder));
    for (const base::Profile profile : {base::Profile::classic, base::Profile::current}) {
        mail::CMessage message({store, clock, *code_page, trace, {}, [=] { return profile; }});
        const base::Text text = code_page->to_text(bytes);
        message.DodajMail(text, base::Text(folder), false);
    }
    return 0;
}
