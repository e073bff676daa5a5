#include "tests/sandbox/sample_invoice.h"

namespace tavrix::sandbox::testing {

const char* const offline_certificate =
    "-----BEGIN CERTIFICATE-----\n"
    "MIIBvzCCAWWgAwIBAgIIAfIKXTUq5ZAwCgYIKoZIzj0EAwIwMjEVMBMGA1UEAwwM\n"
    "SmFuIEtvd2Fsc2tpMRkwFwYDVQRhDBBWQVRQTC01MjY1ODc3NjM1MCAXDTI2MTEy\n"
    "MjA5NDI1MVoYDzIxMjYxMDI5MDk0MjUxWjAyMRUwEwYDVQQDDAxKYW4gS293YWxz\n"
    "a2kxGTAXBgNVBGEMEFZBVFBMLTUyNjU4Nzc2MzUwWTATBgcqhkjOPQIBBggqhkjO\n"
    "PQMBBwNCAASx5dOXL06VoUbMN0B53CbyOG2L2Wb7n36MQH+7ezqr+ZE9altT+ALu\n"
    "jXiSWp8cVA4S0c52uv8MuMqB5X0s11rRo2MwYTAdBgNVHQ4EFgQUpuHHuV+ghDwk\n"
    "jbOx9EyaY9EFSicwHwYDVR0jBBgwFoAUpuHHuV+ghDwkjbOx9EyaY9EFSicwDwYD\n"
    "VR0TAQH/BAUwAwEB/zAOBgNVHQ8BAf8EBAMCBkAwCgYIKoZIzj0EAwIDSAAwRQIg\n"
    "CU1RoQXmOpmFAywwiU2KMkgmd98YH9WB0XlFTUzalbACIQCwqzCYyUqQlLa6Hm/G\n"
    "mljJ7ArEsSsvu3qe8ahw7MTxdA==\n"
    "-----END CERTIFICATE-----\n";

std::string SampleInvoice::xml() const {
    const auto element = [](const char* name, const std::string& text) {
        return "<" + std::string(name) + ">" + text + "</" + name + ">";
    };
    const std::string address =
        "<Adres><KodKraju>PL</KodKraju><AdresL1>ul. Źródlana 5</AdresL1><AdresL2>00-001 "
        "Warszawa</AdresL2>"
        "</Adres>";
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<Faktura xmlns=\"http://crd.gov.pl/wzor/2025/06/25/13775/\"><Naglowek>"
           "<KodFormularza kodSystemowy=\"FA (3)\" wersjaSchemy=\"1-0E\">FA</KodFormularza>"
           "<WariantFormularza>3</WariantFormularza>"
           "<DataWytworzeniaFa>2026-11-21T06:00:00Z</DataWytworzeniaFa></Naglowek>"
           "<Podmiot1><DaneIdentyfikacyjne>" +
           element("NIP", seller) + element("Nazwa", seller_name) + "</DaneIdentyfikacyjne>" +
           address + "</Podmiot1><Podmiot2><DaneIdentyfikacyjne>" + element("NIP", buyer) +
           element("Nazwa", "Nabywca S.A.") + "</DaneIdentyfikacyjne>" + address +
           "<JST>2</JST><GV>2</GV></Podmiot2>" + other_parties + "<Fa><KodWaluty>PLN</KodWaluty>" +
           element("P_1", issue_date) + element("P_2", number) +
           "<P_13_1>1500.00</P_13_1><P_14_1>345.00</P_14_1><P_13_3>100.50</P_13_3><P_14_3>5.03</"
           "P_14_3>"
           "<P_15>1950.53</P_15><Adnotacje><P_16>2</P_16><P_17>2</P_17><P_18>2</P_18><P_18A>2</"
           "P_18A>"
           "<Zwolnienie><P_19N>1</P_19N></Zwolnienie>"
           "<NoweSrodkiTransportu><P_22N>1</P_22N></NoweSrodkiTransportu><P_23>2</P_23>"
           "<PMarzy><P_PMarzyN>1</P_PMarzyN></PMarzy></Adnotacje>" +
           element("RodzajFaktury", kind) + "<FaWiersz><NrWierszaFa>1</NrWierszaFa>" +
           element("P_7", line_name) +
           "<P_8A>godz.</P_8A><P_8B>15</P_8B><P_9A>100.00</P_9A><P_11>1500.00</P_11><P_12>23</P_12>"
           "</FaWiersz></Fa></Faktura>";
}

}  // namespace tavrix::sandbox::testing
