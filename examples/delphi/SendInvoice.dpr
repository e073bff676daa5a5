{ Wysyla fakture do KSeF biblioteka Tavrix. Delphi 7 i nowsze; Free Pascal dla Windows.

    SendInvoice POLACZENIE NIP TOKEN PLIK_XML TABELA ID SRODOWISKO

    POLACZENIE   napis polaczenia ADO
    NIP, TOKEN   numer podatkowy firmy i jej token KSeF
    PLIK_XML     faktura FA(3) w UTF-8
    TABELA, ID   tabela dokumentow i ddout_id dokumentu
    SRODOWISKO   1 produkcja, 0 demo, 2 test

  Kod wyjscia 0, gdy w wierszu dokumentu stoi numer KSeF, 1, gdy nie, 2 przy zlych argumentach. }
program SendInvoice;

{$APPTYPE CONSOLE}
{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}

uses
  SysUtils, Classes, Variants, ActiveX, ComObj;

{ Jeden znak na kazdy bajt pliku: tak biblioteka dostaje fakture, bez dekodowania. Nie LoadFromFile do TStringList i nie
  String(...), bo te przeszlyby przez strone kodowa. }
function ReadBytesAsCharacters(const FileName: string): WideString;
var
  Content: TMemoryStream;
  Bytes: PAnsiChar;
  I: Integer;
begin
  Content := TMemoryStream.Create;
  try
    Content.LoadFromFile(FileName);
    Bytes := Content.Memory;
    SetLength(Result, Content.Size);
    for I := 1 to Content.Size do
      Result[I] := WideChar(Ord(Bytes[I - 1]));
  finally
    Content.Free;
  end;
end;

{ NULL w kolumnie to pusty tekst. }
function ColumnText(const Connection: OleVariant; const Column, Table: WideString; Id: Integer): WideString;
var
  Rows, Value: OleVariant;
  Query: WideString;
begin
  Query := 'select ' + Column + ' from ' + Table + ' where ddout_id=' + IntToStr(Id);
  Rows := Connection.Execute(Query);
  Result := '';
  if not Rows.EOF then
  begin
    Value := Rows.Fields.Item(0).Value;
    if not VarIsNull(Value) then
      Result := Value;
  end;
  Rows.Close;
end;

function Send: Integer;
var
  Connection, KseF: OleVariant;
  Database, Nip, Token, Xml, Table, Answer, Number: WideString;
  Id, Environment: Integer;
begin
  Database := ParamStr(1);
  Nip := ParamStr(2);
  Token := ParamStr(3);
  Xml := ReadBytesAsCharacters(ParamStr(4));
  Table := ParamStr(5);
  Id := StrToInt(ParamStr(6));
  Environment := StrToInt(ParamStr(7));
  Connection := CreateOleObject('ADODB.Connection');
  Connection.Open(Database);
  try
    KseF := CreateOleObject('Tavrix.KseF_comm');
    Answer := KseF.SendInvoiceToKSeF(Connection, Nip, Token, Xml, 'FA (3)', '1-0E', 'FA', Environment, Table, Id);
    if Answer <> '' then
      WriteLn('KSeF: ', Answer);
    { O przyjeciu faktury mowi wiersz, nie tekst: przyjeta bywa takze wtedy, gdy UPO jeszcze nie ma. }
    Number := ColumnText(Connection, 'numer_ksef', Table, Id);
    WriteLn('numer_ksef: ', Number);
    Result := Ord(Number = '');
  finally
    Connection.Close;
  end;
end;

begin
  if ParamCount <> 7 then
  begin
    WriteLn('SendInvoice POLACZENIE NIP TOKEN PLIK_XML TABELA ID SRODOWISKO');
    Halt(2);
  end;
  CoInitialize(nil);
  try
    ExitCode := Send;
  except
    { Biblioteka zglasza bledy jak kazdy obiekt COM: EOleException z numerem, zrodlem i opisem. }
    on E: Exception do
    begin
      WriteLn(E.ClassName, ': ', E.Message);
      ExitCode := 1;
    end;
  end;
end.
