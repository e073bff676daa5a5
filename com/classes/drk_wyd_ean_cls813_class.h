#pragma once

#include "com/class_table.h"
#include "windows/com_pointer.h"

namespace tavrix::com {

extern const ClassTable drk_wyd_ean_cls813_class;
windows::ComPointer<IDispatch> create_drk_wyd_ean_cls813();

}  // namespace tavrix::com
