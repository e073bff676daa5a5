#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "dialogs/browser.h"
#include "dialogs/chart_window.h"
#include "dialogs/informator.h"
#include "dialogs/printer_choice.h"
#include "frame/about_box.h"
#include "mail/message_form.h"
#include "mail/retrieval_form.h"

namespace tavrix::com {

// The library's own windows on the user's desktop. One form of each kind at a time in the whole
// process, whichever object shows it.

std::unique_ptr<frame::AboutWindow> make_about_window();
std::unique_ptr<mail::MessageWindow> make_message_window();
/// Both informators, each with a place of its own.
std::unique_ptr<dialogs::InformatorWindow> make_informator_window();
std::unique_ptr<dialogs::PrinterWindow> make_printer_window();
/// Both retrieval forms; of them too only one at a time.
std::unique_ptr<mail::RetrievalWindow> make_retrieval_window();

/// Asks the user for a printer; nothing when he has changed his mind.
using PrinterChooser = std::function<std::optional<base::Text>()>;
std::unique_ptr<dialogs::ChartWindow> make_chart_window(PrinterChooser choose_printer);
std::unique_ptr<dialogs::BrowserWindow> make_browser_window();

}  // namespace tavrix::com
