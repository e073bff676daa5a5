// A document is opened, gets its update and has its signatures looked at. Whatever it is, the
// update's own numbers must hold: the gap is where the ByteRange says.
#include <cstdlib>

#include "fuzz/fuzz_target.h"
#include "pdfsign/signature_update.h"
#include "pdfsign/verify.h"
#include "ports/portable/openssl_signing.h"

using namespace tavrix;

std::vector<std::string> fuzz::seeds() {
    // libqpdf finds the objects itself, so the seeds need no table that damage would spoil anyway.
    const std::string page =
        "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R/AcroForm 5 0 R>>endobj\n"
        "2 0 obj<</Type/Pages/Kids[3 0 R]/Count 1/MediaBox[0 0 400 300]/Rotate 90>>endobj\n"
        "3 0 obj<</Type/Page/Parent 2 0 R/Contents 4 0 R/Annots[6 0 R]>>endobj\n"
        "4 0 obj<</Length 3>>stream\nq Q\nendstream endobj\n"
        "5 0 obj<</Fields[6 0 R]/SigFlags 1/XFA(x)>>endobj\n"
        "6 0 obj<</FT/Sig/T(Signature1)/Subtype/Widget/Rect[1 2 3 4]/V 7 0 R>>endobj\n"
        "7 0 obj<</Type/Sig/SubFilter/adbe.pkcs7.detached/ByteRange[0 9 11 "
        "20]/Contents<00>>>endobj\n";
    return {
        page + "trailer<</Root 1 0 R/Size 8>>\nstartxref\n9\n%%EOF\n",
        page +
            "8 0 obj<</Type/XRef/W[1 2 1]/Size 9/Root 1 0 R/Length 0>>stream\n\nendstream endobj\n"
            "startxref\n600\n%%EOF\n"};
}

namespace {

class Memory final : public ports::FileReader {
  public:
    explicit Memory(base::ByteView bytes) : bytes_(bytes) {}
    std::uint64_t size() override { return bytes_.size(); }
    void seek(std::uint64_t position) override { position_ = position; }
    std::size_t read(std::span<std::uint8_t> buffer) override {
        std::size_t got = 0;
        while (got < buffer.size() && position_ < bytes_.size()) {
            buffer[got++] = bytes_[static_cast<std::size_t>(position_++)];
        }
        return got;
    }

  private:
    base::ByteView bytes_;
    std::uint64_t position_ = 0;
};

void sign(base::ByteView bytes, pdfsign::Reading reading, ports::Signing& signing) {
    try {
        auto document = pdfsign::open_document(std::make_unique<Memory>(bytes), reading);
        if (reading == pdfsign::Reading::repairing) {
            pdfsign::expect_repairable(document);
            return;
        }
        const auto update = pdfsign::make_signature_update(
            document, signing, {pdfsign::Profile::usual, u"Żółw", {}, {}, 100});
        if (update.text.at(update.gap_begins) != '<' ||
            update.text.at(update.gap_ends - 1) != '>') {
            std::abort();
        }
    } catch (const std::exception&) {
        return;  // refused
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto signing = ports::make_openssl_signing();
    sign({data, size}, pdfsign::Reading::strict, *signing);
    sign({data, size}, pdfsign::Reading::repairing, *signing);
    try {
        Memory file({data, size});
        pdfsign::verify_pdf(file, *signing, {});
    } catch (const std::exception&) {
        return 0;
    }
    return 0;
}
