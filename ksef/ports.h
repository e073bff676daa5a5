#pragma once

#include <functional>

#include "ksef/settings.h"
#include "ports/clock.h"
#include "ports/code_page.h"
#include "ports/crypto.h"
#include "ports/files.h"
#include "ports/http.h"
#include "ports/locale.h"
#include "ports/text_files.h"
#include "ports/xml.h"
#include "ports/xml_documents.h"

namespace tavrix::ksef {

/// Everything outside that an instance of KseF_comm reaches, but for the host's database, which
/// comes with each call. The references outlive the instance.
struct KsefPorts {
    ports::HttpFactory make_http;
    ports::Crypto& crypto;
    ports::Clock& clock;
    ports::Locale& locale;
    ports::Xml& xml;
    ports::CodePage& code_page;
    ports::DataFiles& files;
    ports::TextFiles& text_files;
    ports::XmlDocuments& xml_documents;
    const Settings& settings;
    /// Called before a call needs `settings` or `make_http`; throws base::AutomationError with what
    /// is wrong with the settings file. Empty where the settings are there from the start.
    std::function<void()> read_settings{};
    /// Where the settings file stands, with a separator at the end: what has to be known by a later
    /// call is kept beside it. Empty where nothing is to be kept.
    base::Text settings_folder{};
    /// The same for the user alone, where that folder cannot be written to; empty for none.
    base::Text user_folder{};
    /// Shows the user a message; empty where nobody sits.
    std::function<void(base::TextView)> show_message{};
};

}  // namespace tavrix::ksef
