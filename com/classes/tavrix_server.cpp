#include "base/version.h"
#include "com/classes/classes.h"
#include "com/guid.h"

namespace tavrix::com {

const Server& server() noexcept {
    static const CreatableClass classes[] = {
        cinfo_class,
        rejestr_class,
        ksef_comm_class,
        drk_wyd_ean_cls_class,
        drk_wyd_ean_cls813_class,
        drk_wyd_ean_cls128_class,
        cls_get_mail_class,
        cmessage_class,
        cls_socket_class,
        cls_send_mail_class,
        cls_pdf_podpis_class,
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
