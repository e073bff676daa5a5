// Signs through Tavrix.ClsPdfPodpis. Argument: the folder with in.pdf, klucz.pfx and stary.pfx. One line for each fact that
// did not hold, then KONIEC; the script host reports no unhandled error.
var folder = WScript.Arguments(0) + "\\", pin = "za\u017c\u00f3\u0142\u0107";
var files = new ActiveXObject("Scripting.FileSystemObject");
var signer = new ActiveXObject("Tavrix.ClsPdfPodpis");

function check(from, to, pfx, password, wanted) {
    var made = signer.pdfpodpis(folder + from, folder + to, folder + pfx, password);
    if (made !== wanted) WScript.Echo(from + " with " + pfx + ": got " + made);
    if (!wanted && files.FileExists(folder + to)) WScript.Echo(to + " is there");
}

check("in.pdf", "raz \u015b.pdf", "klucz.pfx", pin, true);
check("raz \u015b.pdf", "raz \u015b.pdf", "stary.pfx", pin, true);
check("in.pdf", "nic.pdf", "klucz.pfx", "zly", false);
check("klucz.pfx", "nic.pdf", "klucz.pfx", pin, false);
check("in.pdf", "brak\\nic.pdf", "klucz.pfx", pin, false);
WScript.Echo("KONIEC");
