#pragma once

#include "com/server.h"

namespace tavrix::com {

extern const ClassTable ksef_comm_class;
windows::ComPointer<IDispatch> create_ksef_comm();

}  // namespace tavrix::com
