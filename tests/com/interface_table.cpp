#include "tests/com/interface_table.h"

namespace tavrix::test {
namespace {

// clang-format off
const PublishedClass classes[] = {
    {u"CInfo", {
        u"text VersjaLib()",
        u"void OProgramie()",
        u"long sendmail(text Par_Source, text Par_nip, text Par_Wersja, text txt1, text txt2, text txt3, "
            u"ref text Pliki, ref text MailDO2)",
        u"long SendMail_dowolny(ref text MailOD, ref text MailDo, ref text MailTemat, text txt1, text txt2, "
            u"text txt3, ref text Plik, ref text Par_nip, ref long Auto)",
        u"void Wykres(ref bool Par_Czy_Pełny_Ekran, ref object Par_I_wykresy_Flex, ref long Par_I_wykresy_Col, "
            u"ref text Par_I_wykresy_Str, ref long PAr_I_wykresy_X1, ref long X2, "
            u"ref long X3, ref text PAr_I_wykresy_Title, text PAr_I_wykresy_rodzaj, "
            u"text PAr_I_wykresy_checks, integer PAr_I_wykresy_options)",
        u"long Informator(text Nagłówek, text Treść, text Prz0, text Prz1, text Prz2, text Prz3, text Prz4, "
            u"text Prz5, text Prz6, text Prz7, text Prz8, text Prz9, text Prz10, text Prz11, text Prz12)",
        u"long Informator_Zamówień(ref text REF_Informator_Value_Zamówień, "
            u"ref long REF_Informator_Value_Zamówień_WYJ, long Ile_wyj, text Nagłówek, text Treść, text Prz1, "
            u"text Prz2, text Prz3, text Prz4, text Prz5, text Prz6, text Prz7, text Prz8, text Prz9, "
            u"text Przyc0, text Przyc1, text Przyc2, text Przyc3, text Przyc4)",
        u"bool Browse(long Ile_baz, ref text[] Bazy, ref text ConnectionStr1, ref text ConnectionStr2, "
            u"ref text Server)",
        u"text SendMailCDO(ref text sTo, ref text sSubject, ref text sFrom, ref text sBody, "
            u"ref text sSmtpServer, ref integer iSmtpPort, ref text sSmtpUser, ref text sSmtpPword, "
            u"ref text sFilePath, ref bool bSmtpSSL)",
    }},
    {u"Rejestr", {
        u"text RegGetValue(byte MainKey_def, text SubKey, text Value)",
    }},
    {u"KseF_comm", {
        u"property text baseUrl",
        u"text ExtractTokenFromResponse(ref text resp)",
        u"byte[] Base64DecodeToBytes(text base64)",
        u"text SendInvoiceToKSeF(ref object dbb, text nip, text Token, text xmlContent, text systemCode, "
            u"ref text schemaVersion, ref text formcode, long pog517, text Tablica, long Tablica_id)",
        u"text TimestampToUnixMs(text timestamp)",
        u"byte[] HexStringToBytes(ref text hexStr)",
        u"text ExtractPublicKeyFromXML(ref text xmlStr)",
        u"byte[] Base64ToBytes(ref text base64Str)",
        u"text Base64EncodeSS(text strPlain)",
        u"text Base64Encode(ref byte[] bytData)",
        u"text Base64DecodeSS(ref text base64Str)",
        u"text Sha256XmlSimpleb(ref byte[] xml)",
        u"text SendBach(ref object dbb, text xml, text systemCode, text schemaVersion, text formcode, "
            u"text Tablica, text Tablica_id, long pog517)",
        u"text PodzielPlik(text sciezkaZrodlowa, text folderDocelowy)",
        u"text GetUpo(ref object dbb, text nip, text Token, bool IsProduction0D1P2T)",
        u"text GetFaktury(ref object dbb, text nip, text Token, long id_grprod, long pog517, text subjectType)",
        u"text GetFaktury_xml(ref object dbb)",
        u"text GetToken(text nip)",
        u"text GetQr2(ref object dbb, text NumSerCertyfikatu, ref text Tablica, long Tablica_id, text nip)",
        u"text LoadXMLFromFile(text FilePath)",
        u"text SprawdzXMLzXSD(text strXML, text strXSD)",
        u"text XMLdoHTML(text strXML, text strXSL, text Plik)",
    }},
    {u"Drk_Wyd_Ean_cls", {
        u"property currency wys",
        u"property currency szer",
        u"void RysujEAN(object pict, text EAN_text, long stX_Par, long Sty_Par, long maxx_Par, long maxy_Par, "
            u"long Rozm, text Rodzaj, bool beznapisów, bool rotate, text KatalogProgramu, text WindowsDir)",
        u"void RysujEAN39(object pict, text EAN_text, long Rozm, bool bn, bool rotate, text KatalogProgramu, "
            u"text WindowsDir)",
        u"void RysujEAN39ex(object pict, text EAN_text, long Rozm, bool bn, bool rotate, "
            u"text KatalogProgramu, text WindowsDir)",
        u"bool SetCzcionkę(object pict, text fnt, text Plik, bool silent, text KatalogProgramu, "
            u"text WindowsDir)",
        u"bool SyncShell(text CommandLine, variant Timeout_NIE_UZYWANE, "
            u"variant WaitForInputIdle_NIE_UZYWANE, bool Hide)",
        u"void RotateText(object Pdevice, text Text, integer angle, double X, double Y)",
        u"variant RotateSurface(object SourcePicture, object DestPicture, long lngAngle, long XDest, "
            u"long YDest)",
    }},
    {u"Drk_Wyd_Ean_cls813", {
        u"property currency wys",
        u"property currency szer",
        u"text EAN8(text chaine)",
        u"text EAN13(text chaine)",
        u"text AddOn(ref text chaine)",
        u"text BinaryByte(byte Value)",
        u"void RysujEAN(object pict, ref text EAN_text, long Rozm, bool rotate)",
        u"void RotatePicture(object fr_pic, object to_pic, integer angle)",
        u"variant RotateSurface2(object SourcePicture, object DestPicture, long lngAngle, long XDest, "
            u"long YDest)",
    }},
    {u"Drk_Wyd_Ean_cls128", {
        u"variant Code128_Str(text Str)",
        u"long Code128_GetWidth(text Str, integer BarWidth)",
        u"void RysujEAN(object pict, ref text EAN_text, long Rozm, bool bn, bool rotate)",
    }},
    {u"ClsGetMail", {
        u"bool cmdGetMail(ref text host, ref long port, ref text user, ref text Pass, ref bool Delete, "
            u"ref text opis, ref text temat, ref text Katalog)",
        u"CMessage cmdGetMailM(ref text host, ref long port, ref text user, ref text Pass, ref bool Delete, "
            u"ref text Katalog, ref bool czyssl)",
    }},
    {u"CMessage", {
        u"long DodajMail(ref text strMessage, ref text GM_Katalog, ref bool GM_DoplikuTylkoZałączniki)",
        u"property text Headers",
        u"property text MessageBody",
        u"property text MessageText",
        u"property text Encrypted",
        u"property text Comments",
        u"property text Keywords",
        u"property text References",
        u"property text InReplyTo",
        u"property text BCC",
        u"property text CC",
        u"property text sender",
        u"property text ReplyTo",
        u"property text Subject",
        u"property text From",
        u"property text MessageTo",
        u"property text MessageID",
        u"property text SendDate",
        u"property text Received",
        u"property text ReturnPath",
        u"readonly text Files",
        u"readonly long Size",
    }},
    {u"ClsSendMail", {
        u"text NullStr(variant ds)",
        u"text sendmail(text dokogo, text temat, text odkogo, text Body, text smtphost, long smtpport, "
            u"text smtpuser, text smtppass, text Plik, long ssl, text maildw, text htmlBody, text mailudw, "
            u"text DeliveryNotificationOptions, text Priority, text ReplyTo, text sender)",
    }},
    {u"clsSocket", {
        u"long OpeneSocket(ref long ssl, ref long maxWaitMillisec, ref text Adress)",
        u"void CloseSocket()",
        u"void SendString(ref text s)",
        u"text ReceiveString()",
    }, {
        u"BinaryData", u"AbortCheck", u"TextData", u"ProgressInfo", u"PercentDone", u"TaskCompleted",
    }},
    {u"ClsPdfPodpis", {
        u"bool pdfpodpis(ref text Plik, ref text plikpodpisany, ref text cenrtPFX, ref text pin)",
    }},
};
// clang-format on

}  // namespace

std::span<const PublishedClass> published_classes() {
    return classes;
}

}  // namespace tavrix::test
