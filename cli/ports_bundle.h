#pragma once

#include <memory>
#include <string>

#include "frame/settings.h"
#include "frame/trace_log.h"
#include "ksef/ksef_comm.h"
#include "mail/delivery.h"
#include "mail/pop3/retrieval.h"
#include "pdfsign/sign_ports.h"

namespace tavrix::cli {

/// The native adapters, made once for a run. Settings come from the file that $TAVRIX_SETTINGS
/// names.
class PortsBundle {
  public:
    PortsBundle();
    /// What KseF_comm needs; valid as long as this object.
    ksef::KsefPorts for_ksef();
    /// What reading a message needs; as long valid.
    mail::MessagePorts for_messages();
    /// What sending one needs; as long valid.
    mail::DeliveryPorts for_delivery();
    /// What one retrieval of mail needs; as long valid.
    mail::RetrievalPorts for_retrieval();
    /// What signing PDF files needs; as long valid.
    pdfsign::PdfPorts for_pdf() { return {*files_, *clock_, *code_page_, *signing_}; }
    ports::CodePage& code_page() { return *code_page_; }
    ports::Crypto& crypto() { return *crypto_; }
    ports::DataFiles& files() { return *files_; }
    ports::XmlDocuments& xml_documents() { return *xml_documents_; }

  private:
    frame::Settings settings_;
    std::unique_ptr<ports::Crypto> crypto_;
    std::unique_ptr<ports::Signing> signing_;
    std::unique_ptr<ports::Clock> clock_;
    std::unique_ptr<ports::Locale> locale_;
    std::unique_ptr<ports::Xml> xml_;
    std::unique_ptr<ports::CodePage> code_page_;
    std::unique_ptr<ports::DataFiles> files_;
    std::unique_ptr<ports::TextFiles> text_files_;
    std::unique_ptr<ports::XmlDocuments> xml_documents_;
    std::unique_ptr<ports::FileStore> file_store_;
    std::unique_ptr<ports::DataFiles> traced_drive_;
    frame::TraceSwitch trace_switch_ = false;
    frame::TraceLog trace_;
};

/// A file's bytes. Throws CLI::ValidationError when it cannot be read.
base::Bytes read_file(const std::string& path);

}  // namespace tavrix::cli
