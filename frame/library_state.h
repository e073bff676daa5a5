#pragma once

#include "dialogs/browser.h"
#include "dialogs/chart.h"
#include "dialogs/informator.h"
#include "frame/trace_log.h"
#include "mail/message_form.h"
#include "mail/pop3/retrieval.h"

namespace tavrix::frame {

/// What the facade's methods hand to their dialogs, and what a dialog leaves there. The records
/// keep their last values while the library stays loaded; nothing protects them from a second call
/// that comes in while a dialog is open.
struct HandOver {
    mail::MailRecord mail;
    dialogs::ChartRecord chart;
    dialogs::InformatorRecord informator;
    dialogs::OrderInformatorRecord order_informator;
    dialogs::BrowserRecord browser;
    mail::RetrievalSettings retrieval;
};

/// Everything that outlives a call: there is one of it for as long as the library stays loaded.
/// Instances of the public classes share nothing else.
struct LibraryState {
    TraceSwitch trace_switch = false;
    HandOver hand_over;
};

}  // namespace tavrix::frame
