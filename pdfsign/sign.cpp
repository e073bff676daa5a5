#include "pdfsign/sign.h"

#include <algorithm>

#include "pdfsign/caption.h"
#include "pdfsign/object_text.h"
#include "pdfsign/refusal.h"
#include "pdfsign/signature_update.h"

namespace tavrix::pdfsign {
namespace {

constexpr std::size_t piece_bytes = 64 * 1024;
// Signatures by elliptic curves differ by some bytes in length.
constexpr std::size_t spare_bytes = 64;

// A file beside another one, for the time of its life.
class BesideFile {
  public:
    BesideFile(const PdfPorts& ports, base::TextView path) : files_(ports.files) {
        std::uint8_t random[8];
        ports.signing.fill_random(random);
        const std::string digits =
            hexadecimal({reinterpret_cast<const char*>(random), sizeof random});
        name_ = base::Text(path) + u"." + base::from_utf8(digits.substr(1, 16)) + u".tmp";
    }
    ~BesideFile() {
        try {
            files_.remove(name_);
        } catch (
            const std::exception&) {  // NOLINT(bugprone-empty-catch): nothing else is left to do
        }
    }
    BesideFile(const BesideFile&) = delete;
    BesideFile& operator=(const BesideFile&) = delete;
    base::TextView name() const { return name_; }

  private:
    ports::DataFiles& files_;
    base::Text name_;
};

// The document goes through here once, to the new file and into the signature.
void copy_all(ports::FileReader& file, ports::FileWriter& to, ports::DetachedSignature& signature) {
    const std::uint64_t size = file.size();
    base::Bytes piece(piece_bytes);
    std::uint64_t copied = 0;
    file.seek(0);
    while (const std::size_t got = file.read(piece)) {
        to.write(base::ByteView(piece).first(got));
        signature.add(base::ByteView(piece).first(got));
        copied += got;
    }
    if (copied != size) refuse(u"plik zmienił się w czasie podpisywania");
}

void put_into_gap(SignatureUpdate& update, base::ByteView signature) {
    const std::string digits = hexadecimal(base::chars_of(signature));
    // Without the bracket at the end: zeros follow.
    if (digits.size() > update.gap_ends - update.gap_begins) refuse(u"podpis jest za długi");
    std::copy(digits.begin(), digits.end() - 1,
              update.text.begin() + static_cast<std::ptrdiff_t>(update.gap_begins));
}

void write_signed(const PdfPorts& ports, OpenDocument& document, ports::Signer& signer,
                  base::TextView in, base::TextView out, Profile profile) {
    const auto time =
        profile == Profile::pades ? ports::SigningTime::nowhere : ports::SigningTime::in_attribute;
    SignatureContent content{profile, readable_name(signer.name()), ports.clock.now_local(),
                             ports.signing.now_utc(), 0};
    content.bytes = signer.begin(content.utc, time)->finish().size() + spare_bytes;
    SignatureUpdate update = make_signature_update(document, ports.signing, content);

    document.source->expect_no_failure();

    const auto file = ports.files.create_like(out, in);
    const auto signature = signer.begin(content.utc, time);
    copy_all(*document.file, *file, *signature);
    const base::ByteView text = base::bytes_of(update.text);
    signature->add(text.first(update.gap_begins));
    signature->add(text.subspan(update.gap_ends));
    put_into_gap(update, signature->finish());
    file->write(base::bytes_of(update.text));
    // Nothing may have the document open when the new one takes its place.
    document = {};
    file->keep();
}

}  // namespace

std::unique_ptr<ports::Signer> load_signer(const PdfPorts& ports, base::TextView path,
                                           base::TextView password) {
    constexpr std::size_t largest_pfx = 16 * 1024 * 1024;
    std::vector<base::SecretBytes> passwords;
    const base::SecretUtf8 utf8 = base::to_secret_utf8(password);
    passwords.emplace_back(base::bytes_of(utf8.view()));
    base::SecretBytes ansi = base::take_secret(ports.code_page.to_bytes(password));
    if (!std::ranges::equal(ansi.view(), passwords.front().view())) {
        passwords.push_back(std::move(ansi));
    }
    return ports.signing.load_pfx(ports::read_whole(ports.files, path, largest_pfx), passwords);
}

PdfToSign::PdfToSign(const PdfPorts& ports, base::TextView path) : ports_(ports), path_(path) {
    try {
        document_ = open_document(ports_.files.open(path), Reading::strict);
        return;
    } catch (const base::AutomationError&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        damaged_ = true;
    }
    document_ = open_document(ports_.files.open(path), Reading::repairing);
    expect_repairable(document_);
}

void PdfToSign::sign(ports::Signer& signer, base::TextView out, Profile profile) {
    if (damaged_) {
        sign_repaired(signer, out, profile);
    } else {
        write_signed(ports_, document_, signer, path_, out, profile);
    }
}

void PdfToSign::sign_repaired(ports::Signer& signer, base::TextView out, Profile profile) {
    const BesideFile whole(ports_, out);
    write_repaired(document_, ports_.files, whole.name());
    document_ = {};
    OpenDocument repaired = open_document(ports_.files.open(whole.name()), Reading::strict);
    write_signed(ports_, repaired, signer, path_, out, profile);
}

}  // namespace tavrix::pdfsign
