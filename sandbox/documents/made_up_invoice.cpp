#include "sandbox/documents/made_up_invoice.h"

#include <cstdio>

#include "sandbox/basics/xml.h"

namespace tavrix::sandbox {
namespace {

std::string element(const char* name, std::string_view text) {
    return "<" + std::string(name) + ">" + xml_escape(text) + "</" + name + ">";
}

std::string party(const char* identifier, const std::string& value, const std::string& name) {
    return "<DaneIdentyfikacyjne>" + element(identifier, value) + element("Nazwa", name) +
           "</DaneIdentyfikacyjne>";
}

/// \param grosze at least zero.
std::string amount(int grosze) {
    char text[32];
    std::snprintf(text, sizeof text, "%d.%02d", grosze / 100, grosze % 100);
    return text;
}

constexpr const char* address =
    "<Adres><KodKraju>PL</KodKraju><AdresL1>ul. Polna 1, 00-001 Warszawa</AdresL1></Adres>";

}  // namespace

std::string make_up(const MadeUpInvoice& invoice) {
    const int net = invoice.net_zloty * 100, vat = invoice.net_zloty * 23;
    std::string unit;
    if (!invoice.buyer_unit.empty())
        unit = "<Podmiot3>" + party("IDWew", invoice.buyer_unit, "Oddział nabywcy") +
               "<Rola>4</Rola></Podmiot3>";
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<Faktura xmlns=\"http://crd.gov.pl/wzor/2025/06/25/13775/\"><Naglowek>"
           "<KodFormularza kodSystemowy=\"FA (3)\" wersjaSchemy=\"1-0E\">FA</KodFormularza>"
           "<WariantFormularza>3</WariantFormularza>" +
           element("DataWytworzeniaFa", invoice.issue_date + "T06:00:00Z") +
           "</Naglowek><Podmiot1>" + party("NIP", invoice.seller, "Dostawca " + invoice.seller) +
           address + "</Podmiot1><Podmiot2>" +
           party("NIP", invoice.buyer, "Nabywca " + invoice.buyer) + address +
           "<JST>2</JST><GV>2</GV></Podmiot2>" + unit + "<Fa><KodWaluty>PLN</KodWaluty>" +
           element("P_1", invoice.issue_date) + element("P_2", invoice.number) +
           element("P_13_1", amount(net)) + element("P_14_1", amount(vat)) +
           element("P_15", amount(net + vat)) +
           "<Adnotacje><P_16>2</P_16><P_17>2</P_17><P_18>2</P_18><P_18A>2</P_18A>"
           "<Zwolnienie><P_19N>1</P_19N></Zwolnienie>"
           "<NoweSrodkiTransportu><P_22N>1</P_22N></NoweSrodkiTransportu><P_23>2</P_23>"
           "<PMarzy><P_PMarzyN>1</P_PMarzyN></PMarzy></Adnotacje><RodzajFaktury>VAT</RodzajFaktury>"
           "<FaWiersz><NrWierszaFa>1</NrWierszaFa><P_7>Towar</P_7><P_8A>szt.</P_8A><P_8B>1</P_8B>" +
           element("P_9A", amount(net)) + element("P_11", amount(net)) +
           "<P_12>23</P_12></FaWiersz></Fa></Faktura>";
}

}  // namespace tavrix::sandbox
