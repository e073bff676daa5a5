#include "com/ksef_comm_class.h"

#include "com/composition.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"

namespace tavrix::com {
namespace {

using ksef::KseF_comm;

// DISPIDs are published: append only. From 13 on they belong, in this order, to SendBach,
// PodzielPlik, GetUpo, GetFaktury, GetFaktury_xml, GetToken, GetQr2, LoadXMLFromFile,
// SprawdzXMLzXSD and XMLdoHTML.
constexpr auto ksef_comm_members = members(
    property<&KseF_comm::baseUrl, &KseF_comm::set_baseUrl>(1, u"baseUrl",
                                                           u"Adres bazowy API KSeF."),
    method<&KseF_comm::ExtractTokenFromResponse>(
        2, u"ExtractTokenFromResponse",
        u"Wycina token z odpowiedzi JSON; pusty tekst, gdy go nie ma.", by_reference(u"resp")),
    method<&KseF_comm::Base64DecodeToBytes>(
        3, u"Base64DecodeToBytes", u"Bajty zapisane w tekście Base64.", by_value(u"base64")),
    method<&KseF_comm::SendInvoiceToKSeF>(
        4, u"SendInvoiceToKSeF",
        u"Wysyła fakturę w sesji interaktywnej, zapisuje wynik i UPO w wierszu dokumentu.",
        by_reference(u"dbb"), by_value(u"nip"), by_value(u"Token"), by_value(u"xmlContent"),
        by_value(u"systemCode"), by_reference(u"schemaVersion"), by_reference(u"formcode"),
        by_value(u"pog517"), by_value(u"Tablica"), by_value(u"Tablica_id")),
    method<&KseF_comm::TimestampToUnixMs>(
        5, u"TimestampToUnixMs", u"Milisekundy od 1970-01-01 UTC dla znacznika czasu ISO 8601.",
        by_value(u"timestamp")),
    method<&KseF_comm::HexStringToBytes>(6, u"HexStringToBytes", u"Bajty tekstu w UTF-8.",
                                         by_reference(u"hexStr")),
    method<&KseF_comm::ExtractPublicKeyFromXML>(
        7, u"ExtractPublicKeyFromXML",
        u"Bity klucza publicznego z jego postaci XML; pusty tekst, gdy ich nie ma.",
        by_reference(u"xmlStr")),
    method<&KseF_comm::Base64ToBytes>(
        8, u"Base64ToBytes",
        u"Bajty zapisane w tekście Base64; pusta tablica, gdy tekst jest błędny.",
        by_reference(u"base64Str")),
    method<&KseF_comm::Base64EncodeSS>(
        9, u"Base64EncodeSS", u"Base64 tekstu w stronie kodowej systemu, bez podziału na wiersze.",
        by_value(u"strPlain")),
    method<&KseF_comm::Base64Encode>(10, u"Base64Encode",
                                     u"Base64 bajtów, z podziałem na wiersze komponentu XML.",
                                     by_reference(u"bytData")),
    method<&KseF_comm::Base64DecodeSS>(11, u"Base64DecodeSS",
                                       u"Tekst w stronie kodowej systemu zapisany w Base64.",
                                       by_reference(u"base64Str")),
    method<&KseF_comm::Sha256XmlSimpleb>(12, u"Sha256XmlSimpleb",
                                         u"Skrót SHA-256 bajtów, w Base64.", by_reference(u"xml")));

}  // namespace

constexpr ClassTable ksef_comm_class = {
    .class_id = guid("D422C633-A288-42AD-9710-6414035C1877"),
    .interface_id = guid("992E9225-68D6-4DC5-83EA-5AED2EA48896"),
    .name = u"KseF_comm",
    .help = u"Tavrix: wymiana faktur z KSeF",
    .members = ksef_comm_members,
};

windows::ComPointer<IDispatch> create_ksef_comm() {
    return make_object(ksef_comm_class, compose_ksef_comm());
}

}  // namespace tavrix::com
