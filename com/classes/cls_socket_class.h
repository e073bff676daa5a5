#pragma once

#include "com/class_table.h"
#include "windows/com_pointer.h"

namespace tavrix::com {

extern const ClassTable cls_socket_class;
windows::ComPointer<IDispatch> create_cls_socket();

}  // namespace tavrix::com
