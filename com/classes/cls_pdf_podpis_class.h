#pragma once

#include "com/server.h"

namespace tavrix::com {

extern const ClassTable cls_pdf_podpis_class;
windows::ComPointer<IDispatch> create_cls_pdf_podpis();

}  // namespace tavrix::com
