#include "base/version.h"
#include "com/guid.h"
#include "com/ksef_comm_class.h"

namespace tavrix::com {

const Server& server() noexcept {
    static const CreatableClass classes[] = {
        {ksef_comm_class, &create_ksef_comm},
    };
    static const Server tavrix = {
        .library = base::product_title,
        .version_major = base::version_major,
        .classes = classes,
        .type_library_id = guid("5FC8EFCB-3C8D-44BB-8DB5-710083B78EB0"),
    };
    return tavrix;
}

}  // namespace tavrix::com
