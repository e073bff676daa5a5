{ Wysyla fakture do KSeF biblioteka Tavrix. Delphi 7 i nowsze; Free Pascal dla Windows.

    SendInvoice POLACZENIE NIP PLIK_TOKENU PLIK_XML TABELA ID SRODOWISKO

    POLACZENIE   napis polaczenia ADO
    NIP          numer podatkowy firmy, ten sam co w tokenie
    PLIK_TOKENU  plik, w ktorym jest tylko token KSeF
    PLIK_XML     faktura FA(3) w UTF-8
    TABELA, ID   tabela dokumentow i ddout_id dokumentu
    SRODOWISKO   1 produkcja, 0 demo, 2 test

  Kod wyjscia: 0 numer i UPO sa w wierszu, 1 numeru nie ma, 2 zle argumenty, 3 blad programu, 4 numer jest, UPO nie. Przy 1 KSeF
  odrzucil fakture albo nie wiadomo (przerwane polaczenie); ponownie wysyla sie te same bajty, nie fakture zrobiona od nowa. }
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

{ Sam token: bez konca wiersza i bez trzech bajtow znacznika UTF-8, od ktorych Notatnik bywa, ze zaczyna plik. }
function ReadToken(const FileName: string): WideString;
begin
  Result := Trim(ReadBytesAsCharacters(FileName));
  if (Result <> '') and (Ord(Result[1]) > 127) then
    Delete(Result, 1, 3);
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
  Token := ReadToken(ParamStr(3));
  Xml := ReadBytesAsCharacters(ParamStr(4));
  Table := ParamStr(5);
  Id := StrToInt(ParamStr(6));
  Environment := StrToInt(ParamStr(7));
  Connection := CreateOleObject('ADODB.Connection');
  Connection.Open(Database);
  try
    { Dokument, ktory ma juz numer, jest w KSeF: drugie wyslanie byloby duplikatem. }
    Number := ColumnText(Connection, 'numer_ksef', Table, Id);
    if Number <> '' then
    begin
      WriteLn('Dokument ma juz numer: ', Number);
      Result := 0;
      Exit;
    end;
    KseF := CreateOleObject('Tavrix.KseF_comm');
    Answer := KseF.SendInvoiceToKSeF(Connection, Nip, Token, Xml, 'FA (3)', '1-0E', 'FA', Environment, Table, Id);
    if Answer <> '' then
      WriteLn('KSeF: ', Answer);
    { O przyjeciu faktury mowi wiersz, nie tekst: przyjeta bywa takze wtedy, gdy UPO jeszcze nie ma. }
    Number := ColumnText(Connection, 'numer_ksef', Table, Id);
    WriteLn('numer_ksef: ', Number);
    if Number = '' then
      Result := 1
    else if Answer <> '' then
      Result := 4
    else
      Result := 0;
  finally
    Connection.Close;
  end;
end;

begin
  if ParamCount <> 7 then
  begin
    WriteLn('SendInvoice POLACZENIE NIP PLIK_TOKENU PLIK_XML TABELA ID SRODOWISKO');
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
      ExitCode := 3;
    end;
  end;
end.
