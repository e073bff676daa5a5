#include "com/classes/ksef_composition.h"

#include "com/classes/compose.h"
#include "com/classes/installed_settings.h"
#include "ports/portable/curl_http.h"
#include "ports/portable/openssl_crypto.h"
#include "ports/portable/openssl_lifetime.h"
#include "ports/windows/ansi_code_page.h"
#include "ports/windows/msxml.h"
#include "ports/windows/windows_clock.h"

namespace tavrix::com {
namespace {

/// Everything outside that a public object reaches.
struct Environment {
    frame::Settings settings = load_installed_settings();
    std::unique_ptr<ports::Crypto> crypto = ports::make_openssl_crypto();
    windows::WindowsClock clock;
    windows::Msxml xml;
    windows::AnsiCodePage code_page;
};

struct ComposedKsef {
    Environment environment;
    ksef::KseF_comm object{
        {[this] { return ports::make_curl_http(environment.settings.connection); },
         *environment.crypto, environment.clock, environment.xml, environment.code_page,
         environment.settings.ksef}};
};

}  // namespace

std::shared_ptr<ksef::KseF_comm> compose_ksef_comm() {
    ports::keep_openssl_off_the_exit_list();
    return compose<ComposedKsef>();
}

}  // namespace tavrix::com
