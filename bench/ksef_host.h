#pragma once

#include "ksef/ksef_comm.h"
#include "ports/native/adapters.h"
#include "ports/portable/curl_http.h"
#include "ports/portable/openssl_crypto.h"
#include "tests/support/fake_clock.h"
#include "tests/support/host_database.h"
#include "tests/support/sandbox.h"

namespace tavrix::bench {

/// A host of KseF_comm, and the sandbox that it calls.
class KsefHost {
  public:
    KsefHost() {
        connection_settings_.proxy = "direct";
        settings_.service.test = base::from_utf8(sandbox.origin());
    }
    std::unique_ptr<ports::Http> make_http() const {
        return ports::make_curl_http(connection_settings_);
    }
    /// Valid as long as this object.
    ksef::KsefPorts ports(ports::HttpFactory http_factory) {
        return {std::move(http_factory),
                *crypto_,
                clock_,
                *locale_,
                *xml_,
                *code_page_,
                *files_,
                *text_files_,
                *xml_documents_,
                settings_};
    }

    test::Sandbox sandbox;

  private:
    ksef::Settings settings_;
    ports::ConnectionSettings connection_settings_;
    std::unique_ptr<ports::Crypto> crypto_ = ports::make_openssl_crypto();
    test::FakeClock clock_;
    std::unique_ptr<ports::Locale> locale_ = ports::make_native_locale();
    std::unique_ptr<ports::Xml> xml_ = ports::make_native_xml();
    std::unique_ptr<ports::CodePage> code_page_ = ports::make_native_code_page();
    std::unique_ptr<ports::DataFiles> files_ = ports::make_native_files({});
    std::unique_ptr<ports::TextFiles> text_files_ = ports::make_native_text_files({});
    std::unique_ptr<ports::XmlDocuments> xml_documents_ = ports::make_native_xml_documents();
};

}  // namespace tavrix::bench
