#pragma once

#include <memory>

#include "barcode/surface/ean_cls.h"
#include "barcode/surface/ean_cls128.h"
#include "frame/cinfo.h"
#include "frame/rejestr.h"
#include "ksef/ksef_comm.h"
#include "mail/cls_socket.h"

namespace tavrix::com {

// Each public object gets adapters of its own, set up from the settings file as it stands when the
// object is created: objects share nothing but the library's hand-over records, and a change of
// settings needs no restart of the host.

/// Reads no settings: what needs them reads them when it is called.
std::shared_ptr<frame::CInfo> compose_cinfo();
std::shared_ptr<frame::Rejestr> compose_rejestr();

/// Throws base::AutomationError when the settings file beside the DLL cannot be read.
std::shared_ptr<ksef::KseF_comm> compose_ksef_comm();
/// Tells `events` what happens. Throws like compose_ksef_comm.
std::shared_ptr<mail::clsSocket> compose_cls_socket(std::unique_ptr<mail::SocketEvents> events);

// These need no settings.
std::shared_ptr<barcode::Drk_Wyd_Ean_cls> compose_ean_cls();
std::shared_ptr<barcode::Drk_Wyd_Ean_cls128> compose_ean_cls128();

}  // namespace tavrix::com
