#include "com/classes/classes.h"

#include "com/classes/compositions.h"
#include "com/classes/host_parameters.h"
#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"

namespace tavrix::com {
namespace {

using ksef::KseF_comm;

// DISPIDs are published: append only.
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
                                         u"Skrót SHA-256 bajtów, w Base64.", by_reference(u"xml")),
    method<&KseF_comm::SendBach>(
        13, u"SendBach", u"Wysyła paczkę faktur w sesji wsadowej.", by_reference(u"dbb"),
        by_value(u"xml"), by_value(u"systemCode"), by_value(u"schemaVersion"),
        by_value(u"formcode"), by_value(u"Tablica"), by_value(u"Tablica_id"), by_value(u"pog517")),
    method<&KseF_comm::PodzielPlik>(14, u"PodzielPlik",
                                    u"Dzieli plik na części po 100 000 000 bajtów.",
                                    by_value(u"sciezkaZrodlowa"), by_value(u"folderDocelowy")),
    method<&KseF_comm::GetUpo>(15, u"GetUpo",
                               u"Zapisuje w dokumentach wyniki zakończonych sesji wsadowych.",
                               by_reference(u"dbb"), by_value(u"nip"), by_value(u"Token"),
                               by_value(u"IsProduction0D1P2T")),
    method<&KseF_comm::GetFaktury>(
        16, u"GetFaktury", u"Pobiera z KSeF faktury zakupu z ostatnich sześćdziesięciu dni.",
        by_reference(u"dbb"), by_value(u"nip"), by_value(u"Token"), by_value(u"id_grprod"),
        by_value(u"pog517"), by_value(u"subjectType")),
    method<&KseF_comm::GetFaktury_xml>(17, u"GetFaktury_xml",
                                       u"Pobiera XML faktur, które go jeszcze nie mają.",
                                       by_reference(u"dbb")),
    method<&KseF_comm::GetToken>(
        18, u"GetToken", u"Nowy token KSeF z prawem odczytu i wysyłki faktur.", by_value(u"nip")),
    method<&KseF_comm::GetQr2>(19, u"GetQr2",
                               u"Podpisany odnośnik certyfikatu dla faktury wystawionej offline.",
                               by_reference(u"dbb"), by_value(u"NumSerCertyfikatu"),
                               by_reference(u"Tablica"), by_value(u"Tablica_id"), by_value(u"nip")),
    method<&KseF_comm::LoadXMLFromFile>(
        20, u"LoadXMLFromFile", u"Tekst pliku w stronie kodowej systemu.", by_value(u"FilePath")),
    method<&KseF_comm::SprawdzXMLzXSD>(
        21, u"SprawdzXMLzXSD",
        u"Sprawdza XML ze schematem; pusty tekst, gdy dokument jest poprawny.", by_value(u"strXML"),
        by_value(u"strXSD")),
    method<&KseF_comm::XMLdoHTML>(22, u"XMLdoHTML",
                                  u"Zapisuje XML przekształcony arkuszem XSL do pliku HTML.",
                                  by_value(u"strXML"), by_value(u"strXSL"), by_value(u"Plik")));

constexpr ClassTable ksef_comm_table = {
    .class_id = guid("D422C633-A288-42AD-9710-6414035C1877"),
    .interface_id = guid("992E9225-68D6-4DC5-83EA-5AED2EA48896"),
    .name = u"KseF_comm",
    .help = u"Tavrix: wymiana faktur z KSeF",
    .members = ksef_comm_members,
};

}  // namespace

constexpr CreatableClass ksef_comm_class = {
    ksef_comm_table, [] { return make_object(ksef_comm_table, compose_ksef_comm()); }};

}  // namespace tavrix::com
