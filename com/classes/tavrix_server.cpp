#include "base/version.h"
#include "com/classes/cinfo_class.h"
#include "com/classes/cls_get_mail_class.h"
#include "com/classes/cls_pdf_podpis_class.h"
#include "com/classes/cls_send_mail_class.h"
#include "com/classes/cls_socket_class.h"
#include "com/classes/cmessage_class.h"
#include "com/classes/drk_wyd_ean_cls128_class.h"
#include "com/classes/drk_wyd_ean_cls813_class.h"
#include "com/classes/drk_wyd_ean_cls_class.h"
#include "com/classes/ksef_comm_class.h"
#include "com/classes/rejestr_class.h"
#include "com/guid.h"

namespace tavrix::com {

const Server& server() noexcept {
    static const CreatableClass classes[] = {
        {cinfo_class, &create_cinfo},
        {rejestr_class, &create_rejestr},
        {ksef_comm_class, &create_ksef_comm},
        {drk_wyd_ean_cls_class, &create_drk_wyd_ean_cls},
        {drk_wyd_ean_cls813_class, &create_drk_wyd_ean_cls813},
        {drk_wyd_ean_cls128_class, &create_drk_wyd_ean_cls128},
        {cls_get_mail_class, &create_cls_get_mail},
        {cmessage_class, &create_cmessage},
        {cls_socket_class, &create_cls_socket},
        {cls_send_mail_class, &create_cls_send_mail},
        {cls_pdf_podpis_class, &create_cls_pdf_podpis},
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
