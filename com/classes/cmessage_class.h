#pragma once

#include "com/server.h"

namespace tavrix::com {

extern const ClassTable cmessage_class;
windows::ComPointer<IDispatch> create_cmessage();

}  // namespace tavrix::com
