#pragma once

#include "com/server.h"

namespace tavrix::com {

extern const ClassTable cinfo_class;
windows::ComPointer<IDispatch> create_cinfo();

}  // namespace tavrix::com
