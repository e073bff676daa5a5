// Sends the demonstration's invoice through Tavrix.KseF_comm to a sandbox, once well and once for each kind of trouble, and
// looks at the returned text and the row. Arguments: the sandbox's address, the database, the invoice's file.
// One line for each fact that did not hold, "cases N", then KONIEC; the script host reports no unhandled error.
var origin = WScript.Arguments(0), cases = 0;
var connection = new ActiveXObject("ADODB.Connection");
connection.Open("Data Source=" + WScript.Arguments(1));
var file = new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(WScript.Arguments(2), 1, false, 0);
var invoice = file.ReadAll();
file.Close();

var sessionFailed = "B\u0142\u0105d inicjalizacji sesji KSeF:";
var accepted = "Faktura o numerze KSeF: ";

function post(path, body) {
    var http = new ActiveXObject("MSXML2.XMLHTTP.3.0");
    http.open("POST", origin + path, false);
    http.setRequestHeader("Content-Type", "application/json");
    http.send(body || "");
}

function row(column) {
    var rows = connection.Execute("select " + column + " from dok_fak where ddout_id=1001");
    var value = rows.Fields(0).Value;
    rows.Close();
    return value === null ? "" : "" + value;
}

function expect(what, actual, wanted) {
    if (actual !== wanted) WScript.Echo(what + ": got [" + actual + "] instead of [" + wanted + "]");
}

function send(options) {
    var ksef = new ActiveXObject("Tavrix.KseF_comm");
    return ksef.SendInvoiceToKSeF(options.connection || connection, "5265877635", "R|nip-5265877635|s",
        options.invoice || invoice, "FA (3)", "1-0E", "FA", 2, options.table || "dok_fak", options.id || 1001);
}

// A fault (or none), the text that comes back, and whether the row then holds a number.
function check(name, fault, wanted, recorded, options) {
    ++cases;
    post("/sandbox/reset");
    connection.Execute("update dok_fak set numer_ksef=null, NumerRef_ksef=null, HashFaktury=null, status_ksef=null, " +
        "UPO_ksef=null, ddout_data_wyst=getdate() where ddout_id=1001");
    if (fault) post("/sandbox/faults", fault);
    var text = send(options || {});
    expect(name, wanted === accepted ? text.substr(0, accepted.length) : text, wanted);
    expect(name + ", status_ksef", row("status_ksef"), recorded ? "200" : "");
    expect(name + ", length of numer_ksef", row("numer_ksef").length, recorded ? 35 : 0);
    if (wanted === "") expect(name + ", UPO", row("UPO_ksef").indexOf("<NumerKSeFDokumentu>" + row("numer_ksef")) > 0, true);
}

check("sent", null, "", true);
check("with a byte-order mark and CR LF", null, "", true,
    { invoice: "\u010F\u00BB\u017C" + invoice.replace(/\n/g, "\r\n") });
var hash = row("HashFaktury");
check("read as Latin-1", null, "", true, { invoice: "\u00EF\u00BB\u00BF" + invoice });
expect("hash of either", row("HashFaktury"), hash);

check("refused connection", '{"step":"auth/challenge","kind":"refuse","count":-1}', sessionFailed + "auth/challenge:STATUS:0", false);
check("Polish letters in an answer", '{"step":"auth/ksef-token","kind":"status","status":500,"body":"B\\u0142\\u0105d \\u017c\\u00f3\\u0142ci"}',
    sessionFailed + "B\u0142\u0105d \u017C\u00F3\u0142ci", false);
check("no such row", null, "Nie znaleziono dokumetu:dok_fak where ddout_id=7", false, { id: 7 });
check("no such table", null, "Nieznany b\u0142\u0105d", false, { table: "nie_ma" });
var closed = new ActiveXObject("ADODB.Connection");
check("closed connection", null, "Nieznany b\u0142\u0105d", false, { connection: closed });
check("UPO cut off", '{"step":"storage/invoice-upo","kind":"cut"}', accepted, true);

WScript.Echo("cases " + cases);
WScript.Echo("KONIEC");
