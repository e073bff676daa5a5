#include "com/classes/compose.h"
#include "com/classes/compositions.h"
#include "com/classes/installed_settings.h"
#include "ports/portable/curl_stream.h"
#include "ports/windows/adapters.h"

namespace tavrix::com {
namespace {

struct ComposedSocket {
    explicit ComposedSocket(std::unique_ptr<mail::SocketEvents> listener)
        : events(std::move(listener)) {}

    std::unique_ptr<mail::SocketEvents> events;
    ports::ConnectionSettings settings = load_installed_settings().connection;
    std::unique_ptr<ports::CodePage> code_page = ports::make_windows_code_page();
    mail::clsSocket object{{ports::make_curl_stream(settings), *code_page, settings, *events}};
};

}  // namespace

std::shared_ptr<mail::clsSocket> compose_cls_socket(std::unique_ptr<mail::SocketEvents> events) {
    return compose<ComposedSocket>(std::move(events));
}

}  // namespace tavrix::com
