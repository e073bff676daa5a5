#pragma once

#include <memory>

#include "barcode/surface/ean_cls.h"
#include "barcode/surface/ean_cls128.h"
#include "frame/cinfo.h"
#include "frame/library_state.h"
#include "frame/rejestr.h"
#include "ksef/ksef_comm.h"
#include "mail/cls_get_mail.h"
#include "mail/cls_send_mail.h"
#include "mail/cls_socket.h"
#include "mail/cmessage.h"
#include "pdfsign/cls_pdf_podpis.h"

namespace tavrix::com {

// Each public object gets adapters of its own, set up from the settings file as its first call that
// needs settings finds it: objects share nothing but the library's hand-over records, a change of
// settings needs no restart of the host, and a file that cannot be taken fails that call alone.

/// What they share.
frame::LibraryState& library_state() noexcept;

std::shared_ptr<frame::CInfo> compose_cinfo();
std::shared_ptr<frame::Rejestr> compose_rejestr();

std::shared_ptr<ksef::KseF_comm> compose_ksef_comm();
std::shared_ptr<mail::ClsSendMail> compose_cls_send_mail();
/// Tells `events` what happens.
std::shared_ptr<mail::clsSocket> compose_cls_socket(std::unique_ptr<mail::SocketEvents> events);
/// Lives on its own: a message outlives the object that fetched it.
std::shared_ptr<mail::CMessage> compose_cmessage();

std::shared_ptr<mail::ClsGetMail> compose_cls_get_mail();

// These need no settings.
std::shared_ptr<barcode::Drk_Wyd_Ean_cls> compose_ean_cls();
std::shared_ptr<barcode::Drk_Wyd_Ean_cls128> compose_ean_cls128();
std::shared_ptr<pdfsign::ClsPdfPodpis> compose_cls_pdf_podpis();

}  // namespace tavrix::com
