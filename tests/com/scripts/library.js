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
WScript.Echo("KONIEC");
