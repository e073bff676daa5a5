#include "com/classes/mail_composition.h"

#include "com/classes/compose.h"
#include "com/classes/installed_settings.h"
#include "ports/portable/curl_stream.h"
#include "ports/portable/openssl_lifetime.h"
#include "ports/windows/ansi_code_page.h"

namespace tavrix::com {
namespace {

struct ComposedSocket {
    explicit ComposedSocket(std::unique_ptr<mail::SocketEvents> listener)
        : events(std::move(listener)) {}

    std::unique_ptr<mail::SocketEvents> events;
    ports::ConnectionSettings settings = load_installed_settings().connection;
    windows::AnsiCodePage code_page;
    mail::clsSocket object{{ports::make_curl_stream(settings), code_page, settings, *events}};
};

}  // namespace

std::shared_ptr<mail::clsSocket> compose_cls_socket(std::unique_ptr<mail::SocketEvents> events) {
    ports::keep_openssl_off_the_exit_list();
    return compose<ComposedSocket>(std::move(events));
}

}  // namespace tavrix::com
