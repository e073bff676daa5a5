#include "base/version.h"
#include "com/ksef_comm_class.h"

namespace tavrix::com {

const Server& server() noexcept {
    static const CreatableClass classes[] = {
        {ksef_comm_class, &create_ksef_comm},
    };
    static const Server tavrix = {base::product_title, base::version_major, classes};
    return tavrix;
}

}  // namespace tavrix::com
