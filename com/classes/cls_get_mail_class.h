#pragma once

#include "com/server.h"

namespace tavrix::com {

extern const ClassTable cls_get_mail_class;
windows::ComPointer<IDispatch> create_cls_get_mail();

}  // namespace tavrix::com
