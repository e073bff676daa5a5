#pragma once

#include "com/server.h"

namespace tavrix::com {

extern const ClassTable rejestr_class;
windows::ComPointer<IDispatch> create_rejestr();

}  // namespace tavrix::com
