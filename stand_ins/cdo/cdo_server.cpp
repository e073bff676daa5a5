#include "com/server.h"
#include "stand_ins/cdo/message.h"

namespace tavrix::com {

// Under the real name, as the platform's own.
const Server& server() noexcept {
    static const CreatableClass classes[] = {{cdo::message_class, &cdo::create_message}};
    static const Server provider = {
        .library = u"CDO", .version_major = 1, .classes = classes, .only_under_wine = true};
    return provider;
}

}  // namespace tavrix::com
