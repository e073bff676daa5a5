#include "base/version.h"
#include "com/drk_wyd_ean_cls128_class.h"
#include "com/drk_wyd_ean_cls813_class.h"
#include "com/drk_wyd_ean_cls_class.h"
#include "com/guid.h"
#include "com/ksef_comm_class.h"

namespace tavrix::com {

const Server& server() noexcept {
    static const CreatableClass classes[] = {
        {ksef_comm_class, &create_ksef_comm},
        {drk_wyd_ean_cls_class, &create_drk_wyd_ean_cls},
        {drk_wyd_ean_cls813_class, &create_drk_wyd_ean_cls813},
        {drk_wyd_ean_cls128_class, &create_drk_wyd_ean_cls128},
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
