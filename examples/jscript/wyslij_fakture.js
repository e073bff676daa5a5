// Wysyla jedna fakture do KSeF i mowi, jaki dostala numer.
//
//   cscript //nologo wyslij_fakture.js POLACZENIE NIP PLIK_TOKENU PLIK_XML TABELA ID SRODOWISKO
//
// Argumenty i kody wyjscia sa te same co w examples/vbscript/wyslij_fakture.vbs.

// Jeden znak na kazdy bajt pliku; biblioteka sama zamienia znaki strony kodowej z powrotem na bajty.
function readBytes(path) {
    var stream = new ActiveXObject("Scripting.FileSystemObject").OpenTextFile(path, 1, false, 0);
    try {
        return stream.ReadAll();
    } finally {
        stream.Close();
    }
}

function columnText(connection, column, table, id) {
    var rows = connection.Execute("select " + column + " from " + table + " where ddout_id=" + id);
    try {
        if (rows.EOF) return "";
        var value = rows.Fields.Item(0).Value;
        return value === null || value === undefined ? "" : String(value);
    } finally {
        rows.Close();
    }
}

function send(database, nip, tokenFile, xmlFile, table, id, environment) {
    // Bez trzech bajtow znacznika UTF-8, od ktorych Notatnik bywa, ze zaczyna plik.
    var token = readBytes(tokenFile).replace(/\s+$/, "").replace(/^[^\x00-\x7f]{3}/, "");
    var xml = readBytes(xmlFile);
    var connection = new ActiveXObject("ADODB.Connection");
    connection.Open(database);
    try {
        // Dokument, ktory ma juz numer, jest w KSeF: drugie wyslanie byloby duplikatem.
        var number = columnText(connection, "numer_ksef", table, id);
        if (number !== "") {
            WScript.Echo("Dokument ma juz numer: " + number);
            return 0;
        }
        var ksef = new ActiveXObject("Tavrix.KseF_comm");
        var answer = ksef.SendInvoiceToKSeF(connection, nip, token, xml, "FA (3)", "1-0E", "FA", environment, table, id);
        // O przyjeciu mowi wiersz, nie tekst: przyjeta bywa takze wtedy, gdy UPO jeszcze nie ma.
        number = columnText(connection, "numer_ksef", table, id);
        WScript.Echo("wynik: " + answer);
        WScript.Echo("numer_ksef: " + number);
        if (number === "") return 1;
        return answer === "" ? 0 : 4;
    } finally {
        connection.Close();
    }
}

var exitCode = 3, given = WScript.Arguments;
if (given.length !== 7) {
    WScript.Echo("wyslij_fakture.js POLACZENIE NIP PLIK_TOKENU PLIK_XML TABELA ID SRODOWISKO");
    exitCode = 2;
} else {
    try {
        exitCode = send(given(0), given(1), given(2), given(3), given(4), Number(given(5)), Number(given(6)));
    } catch (error) {
        WScript.Echo("Blad: " + (error.description || error.message) + " (" + (error.number >>> 0).toString(16) + ")");
    }
    WScript.Echo("KONIEC");
}
WScript.Quit(exitCode);
