#pragma once

#include <cstdint>
#include <memory>

#include "base/secret.h"
#include "ksef/ports.h"
#include "ports/database.h"

namespace tavrix::ksef {

class Client;

/// The public class `KseF_comm`: invoices to and from KSeF. One instance serves one call at a time;
/// it keeps its base address, one HTTP client and the tokens of the last authentication.
///
/// The conversions let base::AutomationError through to the caller; the methods that talk to KSeF
/// raise nothing and report every outcome in their text.
class KseF_comm {
  public:
    explicit KseF_comm(KsefPorts ports);
    ~KseF_comm();

    base::Text baseUrl() const;
    void set_baseUrl(const base::Text& value);

    base::Text ExtractTokenFromResponse(const base::Text& resp) const;
    base::Bytes Base64DecodeToBytes(const base::Text& base64) const;
    base::Text SendInvoiceToKSeF(ports::Database& dbb, const base::Text& nip,
                                 const base::SecretText& Token, const base::Text& xmlContent,
                                 const base::Text& systemCode, const base::Text& schemaVersion,
                                 const base::Text& formcode, std::int32_t pog517,
                                 const base::Text& Tablica, std::int32_t Tablica_id);
    base::Text TimestampToUnixMs(const base::Text& timestamp) const;
    base::Bytes HexStringToBytes(const base::Text& hexStr) const;
    base::Text ExtractPublicKeyFromXML(const base::Text& xmlStr) const;
    base::Bytes Base64ToBytes(const base::Text& base64Str) const;
    base::Text Base64EncodeSS(const base::Text& strPlain) const;
    base::Text Base64Encode(const base::Bytes& bytData) const;
    base::Text Base64DecodeSS(const base::Text& base64Str) const;
    base::Text Sha256XmlSimpleb(const base::Bytes& xml) const;
    base::Text GetUpo(ports::Database& dbb, const base::Text& nip, const base::SecretText& Token,
                      bool IsProduction0D1P2T);
    base::Text GetFaktury(ports::Database& dbb, const base::Text& nip,
                          const base::SecretText& Token, std::int32_t id_grprod,
                          std::int32_t pog517, const base::Text& subjectType);
    /// With the address and the tokens that an earlier call has left.
    base::Text GetFaktury_xml(ports::Database& dbb);
    /// A new KSeF token for whom this instance's last authentication stands, or the text of what
    /// failed. `nip` is not asked for.
    base::SecretText GetToken(const base::Text& nip);
    /// The certificate link of a document, also stored in its row, or the text of what failed; the
    /// empty text when the document has no hash. `Tablica` is "TABLE,TOKEN,SETTINGS NUMBER" and on
    /// return, whatever happens, the table alone.
    base::Text GetQr2(ports::Database& dbb, const base::Text& NumSerCertyfikatu,
                      base::SecretText& Tablica, std::int32_t Tablica_id, const base::Text& nip);
    /// `xml` is the package's path and `Tablica` the KSeF token; nobody reads `Tablica_id`. The
    /// empty text once the session is closed.
    base::Text SendBach(ports::Database& dbb, const base::Text& xml, const base::Text& systemCode,
                        const base::Text& schemaVersion, const base::Text& formcode,
                        const base::SecretText& Tablica, const base::Text& Tablica_id,
                        std::int32_t pog517);
    /// The pieces' paths, separated by ";". Empty, and no piece is left, when one of them could not
    /// be made.
    base::Text PodzielPlik(const base::Text& sciezkaZrodlowa, const base::Text& folderDocelowy);

    /// The file's text in the system's code page. Raises base::AutomationError for one that cannot
    /// be read.
    base::Text LoadXMLFromFile(const base::Text& FilePath);
    /// The empty text for a document that is valid before the schema at the path `strXSD`, and for
    /// a schema that cannot be taken; otherwise "Błąd walidacji: " with reason, line and column.
    base::Text SprawdzXMLzXSD(const base::Text& strXML, const base::Text& strXSD);
    /// Writes `strXML`, as the stylesheet `strXSL` shows it, to the file `Plik`. The empty text, or
    /// "Błąd XSL: " or "Błąd transformacji: " with why.
    base::Text XMLdoHTML(const base::Text& strXML, const base::Text& strXSL,
                         const base::Text& Plik);

  private:
    /// Begins a call with an authentication. Returns the empty text, or that of the failure.
    base::Text log_in(std::int32_t environment, const base::Text& nip,
                      const base::SecretText& token);

    KsefPorts ports_;
    std::unique_ptr<Client> client_;
};

}  // namespace tavrix::ksef
