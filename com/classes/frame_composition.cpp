#include "com/classes/compose.h"
#include "com/classes/compositions.h"
#include "com/classes/delivery_composition.h"
#include "com/classes/installed_settings.h"
#include "com/forms/forms.h"
#include "mail/smtp_mailer.h"
#include "ports/windows/adapters.h"

namespace tavrix::com {
namespace {

std::unique_ptr<ports::InstantMailer> make_mailer(const mail::DeliveryPorts& delivery) {
    if (auto cdo = ports::make_cdo_mailer()) return cdo;
    return std::make_unique<mail::SmtpMailer>(delivery);
}

struct ComposedCInfo {
    std::unique_ptr<frame::AboutWindow> about_window = make_about_window();
    std::unique_ptr<mail::MessageWindow> message_window = make_message_window();
    std::unique_ptr<ports::Printers> printers = ports::make_windows_printers();
    std::unique_ptr<dialogs::PrinterWindow> printer_window = make_printer_window();
    std::unique_ptr<dialogs::ChartWindow> chart_window = make_chart_window(
        [this] { return printer_window->show(dialogs::printer_choice_form(printers->list())); });
    std::unique_ptr<dialogs::InformatorWindow> informator_window = make_informator_window();
    std::unique_ptr<ports::Clock> clock = ports::make_windows_clock();
    std::unique_ptr<ports::Locale> locale = ports::make_windows_locale();
    std::unique_ptr<ports::Registry> registry = ports::make_windows_registry();
    std::unique_ptr<ports::CodePage> code_page = ports::make_windows_code_page();
    std::unique_ptr<ports::Files> files = ports::make_windows_files();
    std::unique_ptr<ports::Shell> shell = ports::make_windows_shell();
    ComposedDelivery delivery;
    std::unique_ptr<ports::InstantMailer> mailer = make_mailer(delivery.ports());
    std::unique_ptr<dialogs::BrowserWindow> browser_window = make_browser_window();
    frame::CInfo object{{*about_window,
                         *message_window,
                         *chart_window,
                         *informator_window,
                         *clock,
                         *locale,
                         {*registry, *code_page, *files, *shell},
                         library_state().hand_over,
                         *mailer,
                         delivery.ports(),
                         &load_installed_settings,
                         *browser_window,
                         &ports::make_ado_query}};
};

struct ComposedRejestr {
    std::unique_ptr<ports::Registry> registry = ports::make_windows_registry();
    std::unique_ptr<ports::CodePage> code_page = ports::make_windows_code_page();
    frame::Rejestr object{*registry, *code_page};
};

}  // namespace

frame::LibraryState& library_state() noexcept {
    static frame::LibraryState state;
    return state;
}

std::shared_ptr<frame::CInfo> compose_cinfo() {
    return compose<ComposedCInfo>();
}

std::shared_ptr<frame::Rejestr> compose_rejestr() {
    return compose<ComposedRejestr>();
}

}  // namespace tavrix::com
