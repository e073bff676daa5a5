#include "pdfsign/open_document.h"

#include <qpdf/Pipeline.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include "pdfsign/refusal.h"

namespace tavrix::pdfsign {
namespace {

// libqpdf writes in small pieces.
class FilePipeline final : public Pipeline {
  public:
    explicit FilePipeline(ports::FileWriter& file) : Pipeline("file", nullptr), file_(file) {}

    void write(unsigned char const* data, std::size_t size) override {
        waiting_.insert(waiting_.end(), data, data + size);
        if (waiting_.size() >= enough) flush();
    }
    void finish() override { flush(); }

  private:
    static constexpr std::size_t enough = 64 * 1024;
    void flush() {
        file_.write(waiting_);
        waiting_.clear();
    }

    ports::FileWriter& file_;
    base::Bytes waiting_;
};

void process(QPDF& pdf, const std::shared_ptr<PdfSource>& source) {
    try {
        pdf.processInputSource(source, "");
    } catch (const QPDFExc& error) {
        if (error.getErrorCode() == qpdf_e_password) refuse(u"plik wymaga hasła");
        throw;
    }
}

// libqpdf gives an object that it cannot read as null, and a form that is taken for none would be
// lost.
void expect_readable(OpenDocument& document) {
    const auto known = document.pdf->getXRefTable();
    QPDFObjectHandle catalog = document.pdf->getRoot();
    QPDFObjectHandle form = document.form.dictionary;
    const auto fields = form.isDictionary() ? form.getKey("/Fields") : QPDFObjectHandle::newNull();
    for (QPDFObjectHandle object :
         {form, fields, catalog.getKey("/Perms"), document.page.page.getKey("/Annots")}) {
        if (object.isIndirect() && object.isNull() && known.contains(object.getObjGen())) {
            throw std::runtime_error("an object cannot be read");
        }
    }
    document.source->expect_no_failure();
}

void read(OpenDocument& document, Reading reading) {
    document.pdf->setSuppressWarnings(true);
    document.pdf->setAttemptRecovery(reading == Reading::repairing);
    process(*document.pdf, document.source);
    if (reading == Reading::strict && (*document.ends.header != 0 || !document.ends.last_section ||
                                       !document.pdf->getTrailer().getKey("/Root").isIndirect())) {
        // Offsets count from the header, but not every reader takes them so.
        throw std::runtime_error("no update can be added");
    }
    document.page = find_first_page(*document.pdf);
    document.form = read_form(*document.pdf);
    expect_readable(document);
    if (document.form.is_closed) refuse(u"plik jest certyfikowany i nie dopuszcza zmian");
    if (document.form.is_dynamic) refuse(u"formularz XFA bez stron");
}

}  // namespace

OpenDocument open_document(std::unique_ptr<ports::FileReader> file, Reading reading) {
    OpenDocument document;
    document.file = std::move(file);
    document.ends = read_ends(*document.file);
    if (!document.ends.header) refuse(u"to nie jest plik PDF");
    // What is left is whole, but older than what its author last wrote.
    if (document.ends.is_cut) refuse(u"plik jest uszkodzony: brakuje końca ostatniej zmiany");
    document.source = std::make_shared<PdfSource>(*document.file);
    document.pdf = std::make_shared<QPDF>();
    try {
        read(document, reading);
    } catch (...) {
        // What a disk fails to give is no fault of the document.
        document.source->expect_no_failure();
        throw;
    }
    return document;
}

void expect_repairable(OpenDocument& document) {
    // A document cut short has no such end; libqpdf would make one of what is left.
    if (!document.ends.has_end) refuse(u"plik jest uszkodzony: brakuje jego końca");
    expect_all_pages(*document.pdf);
    for (QPDFObjectHandle object : document.pdf->getAllObjects()) {
        if (object.isDictionary() && object.hasKey("/ByteRange")) {
            refuse(u"plik jest uszkodzony i podpisany");
        }
    }
}

void write_repaired(OpenDocument& document, ports::DataFiles& files, base::TextView path) {
    const auto file = files.create(path, ports::Readers::owner);
    FilePipeline pipeline(*file);
    // Gives pages that stand inside another object one of their own.
    QPDFPageDocumentHelper(*document.pdf).getAllPages();
    QPDFWriter writer(*document.pdf);
    writer.setOutputPipeline(&pipeline);
    writer.setStreamDataMode(qpdf_s_preserve);
    writer.write();
    pipeline.finish();
    file->keep();
}

}  // namespace tavrix::pdfsign
