// cscript library.js DATABASE: prints what does not hold, then the sentinel.

function expect(what, actual, expected) {
    if (actual !== expected) WScript.Echo(what + ": " + actual + " instead of " + expected);
}

function numberOf(action) {
    try {
        action();
    } catch (error) {
        return error.number;
    }
    return 0;
}

var ksef = new ActiveXObject("Tavrix.KseF_comm");
expect("Base64Encode of a script's array", ksef.Base64Encode([0, 1, 2, 255]), "AAEC/w==");
expect("Base64Encode of bytes", ksef.Base64Encode(ksef.Base64DecodeToBytes("AAEC/w==")), "AAEC/w==");
ksef.baseUrl = "https://example.test";
expect("baseUrl", ksef.baseUrl, "https://example.test");
expect("a wrong count is an error", numberOf(function () { ksef.Base64EncodeSS(); }) < 0, true);

var connection = new ActiveXObject("ADODB.Connection");
connection.Open("Data Source=" + WScript.Arguments.Item(0));
var rows = new ActiveXObject("ADODB.Recordset");
rows.CursorLocation = 3;
rows.Open("select top 1 ddout_id, numer_ksef, opis from dok_fak where ddout_id=1", connection, 3, 4);
expect("Fields(name).Value", rows.Fields("ddout_id").Value, 1);
expect("Fields.Item(number).Name", rows.Fields.Item(1).Name, "numer_ksef");
expect("a null", rows.Fields("numer_ksef").Value, null);
rows.Fields("numer_ksef").Value = "JS-1";
rows.UpdateBatch();
rows.Close();
expect("number of a closed recordset", numberOf(function () { rows.MoveNext(); }), -2146824584);

// An invoice for nobody: every outcome is the returned text.
var returned = ksef.SendInvoiceToKSeF(connection, "1", "a|nip-2|c", "<x/>", "FA (3)", "1-0E", "FA", 2, "dok_fak", 1);
expect("a token of another company ends with its number", returned.substr(returned.length - 2), ":2");
connection.Close();

// Documents, through the system's own XML component.
var disk = new ActiveXObject("Scripting.FileSystemObject");
var folder = disk.GetSpecialFolder(2) + "\\";
function fileOf(name, text) {
    var file = disk.CreateTextFile(folder + name, true);
    file.Write(text);
    file.Close();
    return folder + name;
}
var html = folder + "tavrix.html";
var page = "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'><xsl:output method='html'/>" +
    "<xsl:template match='/'><html><head><title>x</title></head><body><xsl:value-of select='.'/></body></html>" +
    "</xsl:template></xsl:stylesheet>";
expect("XMLdoHTML", ksef.XMLdoHTML("<f>\u0141\u00F3d\u017A \u20AC \u4E2D</f>", page, html), "");
var written = ksef.LoadXMLFromFile(html);
expect("the page's text", written.indexOf("\u0141\u00F3d\u017A \u20AC &#20013;") > 0, true);
expect("the page's encoding", written.indexOf("charset=windows-1250") > 0, true);
expect("a broken stylesheet", ksef.XMLdoHTML("<f/>", "<xsl:", html).substr(0, 9), "B\u0142\u0105d XSL:");
expect("a broken document", ksef.XMLdoHTML("<f>", page, html).substr(0, 19), "B\u0142\u0105d transformacji:");
expect("a missing file", numberOf(function () { ksef.LoadXMLFromFile(folder + "brak.xml"); }), -2146828235);
var schema = fileOf("tavrix.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'><xs:element name='f' type='xs:int'/></xs:schema>");
expect("a valid document", ksef.SprawdzXMLzXSD("<f>1</f>", schema), "");
var invalid = ksef.SprawdzXMLzXSD("\r\n<f>a</g>", schema);
expect("an invalid one, " + invalid, invalid.substr(0, 16) + (invalid.indexOf("\r\nLinia: ") > 0), "B\u0142\u0105d walidacji: true");
expect("a schema that is not there", ksef.SprawdzXMLzXSD("<f/>", folder + "brak.xsd"), "");
WScript.Echo("KONIEC");
