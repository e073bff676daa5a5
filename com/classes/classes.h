#pragma once

#include "com/server.h"

namespace tavrix::com {

// Each public class: its table, and how one of its objects is made.
extern const CreatableClass cinfo_class;
extern const CreatableClass rejestr_class;
extern const CreatableClass ksef_comm_class;
extern const CreatableClass drk_wyd_ean_cls_class;
extern const CreatableClass drk_wyd_ean_cls813_class;
extern const CreatableClass drk_wyd_ean_cls128_class;
extern const CreatableClass cls_get_mail_class;
extern const CreatableClass cmessage_class;
extern const CreatableClass cls_socket_class;
extern const CreatableClass cls_send_mail_class;
extern const CreatableClass cls_pdf_podpis_class;

}  // namespace tavrix::com
