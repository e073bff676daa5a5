#include "com/classes/compose.h"
#include "com/classes/compositions.h"
#include "com/classes/installed_settings.h"
#include "ports/portable/curl_http.h"
#include "ports/portable/openssl_crypto.h"
#include "ports/windows/adapters.h"

namespace tavrix::com {
namespace {

struct ComposedKsef {
    SettingsOnDemand settings;
    std::unique_ptr<ports::Crypto> crypto = ports::make_openssl_crypto();
    std::unique_ptr<ports::Clock> clock = ports::make_windows_clock();
    std::unique_ptr<ports::Locale> locale = ports::make_windows_locale();
    std::unique_ptr<ports::Xml> xml = ports::make_windows_xml();
    std::unique_ptr<ports::CodePage> code_page = ports::make_windows_code_page();
    std::unique_ptr<ports::DataFiles> files = ports::make_windows_files();
    std::unique_ptr<ports::TextFiles> text_files = ports::make_windows_text_files();
    std::unique_ptr<ports::XmlDocuments> xml_documents = ports::make_windows_xml_documents();
    std::unique_ptr<ports::Shell> shell = ports::make_windows_shell();
    ksef::KseF_comm object{{[this] { return ports::make_curl_http(settings.get().connection); },
                            *crypto, *clock, *locale, *xml, *code_page, *files, *text_files,
                            *xml_documents, settings.get().ksef, [this] { settings.read(); },
                            installed_folder(), user_folder(),
                            [this](base::TextView text) { shell->show_message(text, 0); }}};
};

}  // namespace

std::shared_ptr<ksef::KseF_comm> compose_ksef_comm() {
    return compose<ComposedKsef>();
}

}  // namespace tavrix::com
