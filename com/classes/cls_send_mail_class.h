#pragma once

#include "com/server.h"

namespace tavrix::com {

extern const ClassTable cls_send_mail_class;
windows::ComPointer<IDispatch> create_cls_send_mail();

}  // namespace tavrix::com
