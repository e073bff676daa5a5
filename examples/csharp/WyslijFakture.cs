// Wysyła jedną fakturę do KSeF i mówi, jaki dostała numer. .NET Framework 4 i nowsze, także .NET na Windows.
//
//   csc /platform:x86 WyslijFakture.cs
//   WyslijFakture POŁĄCZENIE NIP PLIK_TOKENU PLIK_XML TABELA ID ŚRODOWISKO
//
// /platform:x86 do 32-bitowej Tavrix.dll, /platform:x64 do 64-bitowej. Argumenty i kody wyjścia są te same co w
// examples/vbscript/wyslij_fakture.vbs.
using System;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;

static class WyslijFakture
{
    // Klasy biblioteki żyją w apartamencie jednowątkowym.
    [STAThread]
    static int Main(string[] args)
    {
        if (args.Length != 7)
        {
            Console.Error.WriteLine("WyslijFakture POŁĄCZENIE NIP PLIK_TOKENU PLIK_XML TABELA ID ŚRODOWISKO");
            return 2;
        }
        try
        {
            return Send(args[0], args[1], args[2], args[3], args[4], int.Parse(args[5]), int.Parse(args[6]));
        }
        catch (COMException error)
        {
            Console.Error.WriteLine("{0} (0x{1:X8})", error.Message, error.ErrorCode);
            return 3;
        }
        catch (Exception error)
        {
            Console.Error.WriteLine(error.Message);
            return 3;
        }
    }

    static int Send(string database, string nip, string tokenFile, string xmlFile, string table, int id, int environment)
    {
        string token = File.ReadAllText(tokenFile).Trim();
        // Jeden znak na każdy bajt: Latin-1 oddaje każdy bajt takim, jaki był.
        string xml = Encoding.GetEncoding(28591).GetString(File.ReadAllBytes(xmlFile));
        dynamic connection = Create("ADODB.Connection");
        connection.Open(database);
        try
        {
            // Dokument, który ma już numer, jest w KSeF: drugie wysłanie byłoby duplikatem.
            string number = ColumnText(connection, "numer_ksef", table, id);
            if (number != "")
            {
                Console.WriteLine("Dokument ma już numer: " + number);
                return 0;
            }
            dynamic ksef = Create("Tavrix.KseF_comm");
            string answer = ksef.SendInvoiceToKSeF(connection, nip, token, xml, "FA (3)", "1-0E", "FA", environment, table, id);
            // O przyjęciu mówi wiersz, nie tekst: przyjęta bywa także wtedy, gdy UPO jeszcze nie ma.
            number = ColumnText(connection, "numer_ksef", table, id);
            Console.WriteLine("wynik: " + answer);
            Console.WriteLine("numer_ksef: " + number);
            if (number == "") return 1;
            return answer == "" ? 0 : 4;
        }
        finally
        {
            connection.Close();
        }
    }

    static dynamic Create(string progId)
    {
        Type type = Type.GetTypeFromProgID(progId);
        if (type == null) throw new InvalidOperationException("Klasa nie jest zarejestrowana: " + progId);
        return Activator.CreateInstance(type);
    }

    static string ColumnText(dynamic connection, string column, string table, int id)
    {
        dynamic rows = connection.Execute("select " + column + " from " + table + " where ddout_id=" + id);
        try
        {
            return rows.EOF ? "" : Convert.ToString((object)rows.Fields[0].Value);
        }
        finally
        {
            rows.Close();
        }
    }
}
