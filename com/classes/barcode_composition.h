#pragma once

#include <memory>

#include "barcode/surface/ean_cls.h"
#include "barcode/surface/ean_cls128.h"

namespace tavrix::com {

// Each public object gets adapters of its own; it needs no settings.

std::shared_ptr<barcode::Drk_Wyd_Ean_cls> compose_ean_cls();
std::shared_ptr<barcode::Drk_Wyd_Ean_cls128> compose_ean_cls128();

}  // namespace tavrix::com
