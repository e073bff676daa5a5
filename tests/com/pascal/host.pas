{ host PORT: uses every class through the unit that Free Pascal's importer makes of the type library, as a Delphi program would:
  bound when it is compiled, texts by reference, typed events, EOleException. PORT is where an HTTP server listens on the loopback.
  One line for each fact that does not hold, then the sentinel. }
program host;

{$MODE DELPHI}

uses
  SysUtils, Variants, ActiveX, ComObj, Tavrix_TLB;

type
  { What the socket told, in the order in which it came. }
  TListener = class
    Steps, Received: WideString;
    Checks: Integer;
    Finished: Boolean;
    procedure AbortCheck(Sender: TObject; var Abort: WordBool);
    procedure TextData(Sender: TObject; Text_: WideString);
    procedure ProgressInfo(Sender: TObject; Name, Value: WideString);
    procedure TaskCompleted(Sender: TObject; Success: WordBool);
  end;

procedure Expect(const What: string; const Actual, Wanted: Variant);
begin
  if VarCompareValue(Actual, Wanted) <> vrEqual then
    WriteLn(What, ': ', VarToStr(Actual), ' instead of ', VarToStr(Wanted));
end;

procedure TListener.AbortCheck(Sender: TObject; var Abort: WordBool);
begin
  Inc(Checks);
  Abort := False;
end;

procedure TListener.TextData(Sender: TObject; Text_: WideString);
begin
  Received := Received + Text_;
end;

procedure TListener.ProgressInfo(Sender: TObject; Name, Value: WideString);
begin
  Steps := Steps + Name + ';';
end;

procedure TListener.TaskCompleted(Sender: TObject; Success: WordBool);
begin
  Finished := Success;
end;

function Bytes(const Values: array of Byte): OleVariant;
var
  I: Integer;
begin
  Result := VarArrayCreate([0, High(Values)], varByte);
  for I := 0 to High(Values) do
    Result[I] := Values[I];
end;

procedure UseFacade;
var
  Info: _CInfo;
begin
  Info := CoCInfo.Create;
  Expect('VersjaLib', Copy(Info.VersjaLib, 1, 8), '10.0.36.');
end;

procedure UseRegistry;
const
  LocalMachine = 2;
  Nothing = 4;
var
  Reader: _Rejestr;
begin
  Reader := CoRejestr.Create;
  Expect('a value', Reader.RegGetValue(LocalMachine, 'SOFTWARE\Microsoft\Windows NT\CurrentVersion', 'CurrentVersion') <> '', True);
  Expect('no such root', Reader.RegGetValue(Nothing, 'SOFTWARE', 'CurrentVersion'), '');
end;

procedure UseKsef;
var
  Ksef: _KseF_comm;
  Text: WideString;
  Data: OleVariant;
begin
  Ksef := CoKseF_comm.Create;
  Ksef.baseUrl := 'https://example.test';
  Expect('baseUrl', Ksef.baseUrl, 'https://example.test');
  Text := 'UVVFTg==';
  Expect('Base64DecodeSS', Ksef.Base64DecodeSS(Text), 'QUEN');
  Data := Bytes([0, 1, 2, 255]);
  Expect('Base64Encode', Trim(Ksef.Base64Encode(Data)), 'AAEC/w==');
  { FIPS 180-4: the digest of "abc". }
  Data := Bytes([Ord('a'), Ord('b'), Ord('c')]);
  Expect('Sha256XmlSimpleb', Trim(Ksef.Sha256XmlSimpleb(Data)), 'ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0=');
  Data := Ksef.Base64DecodeToBytes('AAEC/w==');
  Expect('upper bound', VarArrayHighBound(Data, 1), 3);
  Expect('last byte', Data[3], 255);
end;

procedure UseBarcodes;
var
  Dispatcher: _Drk_Wyd_Ean_cls;
  Ean: _Drk_Wyd_Ean_cls813;
  Code128: _Drk_Wyd_Ean_cls128;
  Digits: WideString;
  Size: Currency;
begin
  Ean := CoDrk_Wyd_Ean_cls813.Create;
  Expect('EAN-13', Length(Ean.EAN13('590123412345')), 15);
  Expect('BinaryByte', Ean.BinaryByte(5), '00000101');
  Digits := '12';
  Expect('AddOn', Ean.AddOn(Digits) <> '', True);
  Code128 := CoDrk_Wyd_Ean_cls128.Create;
  Expect('Code128_GetWidth', Code128.Code128_GetWidth('A', 3), 3 * Code128.Code128_GetWidth('A', 1));
  Dispatcher := CoDrk_Wyd_Ean_cls.Create;
  Dispatcher.szer := 12.3456;
  Size := Dispatcher.szer;
  Expect('a currency', Size, 12.3456);
end;

procedure UseMail;
var
  Mail: _CMessage;
  Sender: _ClsSendMail;
  Fetcher: _ClsGetMail;
  Host, User, Password, Folder: WideString;
  Port: Integer;
  Delete, Encrypted: WordBool;
begin
  Mail := CoCMessage.Create;
  Mail.Subject := 'Faktura';
  Expect('Subject', Mail.Subject, 'Faktura');
  Expect('Files', Mail.Files, '');
  Sender := CoClsSendMail.Create;
  Expect('NullStr', Sender.NullStr(Null), '');
  { Nobody listens there. }
  Fetcher := CoClsGetMail.Create;
  Host := '127.0.0.1';
  Port := 1;
  Expect('no mail', Fetcher.cmdGetMailM(Host, Port, User, Password, Delete, Folder, Encrypted) = nil, True);
end;

procedure UsePdf;
var
  Signer: _ClsPdfPodpis;
  Source, Target, Certificate, Pin: WideString;
begin
  Signer := CoClsPdfPodpis.Create;
  Source := 'Z:\no\such\file.pdf';
  Expect('no such file', Signer.pdfpodpis(Source, Target, Certificate, Pin), False);
end;

procedure UseSocket(const Port: string);
var
  Socket: TEvsclsSocket;
  Listener: TListener;
  Ssl, Wait: Integer;
  Address, Request: WideString;
begin
  Listener := TListener.Create;
  Socket := TEvsclsSocket.Create(nil);
  Socket.OnAbortCheck := Listener.AbortCheck;
  Socket.OnTextData := Listener.TextData;
  Socket.OnProgressInfo := Listener.ProgressInfo;
  Socket.OnTaskCompleted := Listener.TaskCompleted;
  Ssl := 0;
  Wait := 5000;
  Address := '127.0.0.1:' + Port;
  Expect('OpeneSocket', Socket.ComServer.OpeneSocket(Ssl, Wait, Address), 1);
  Expect('connected', Listener.Steps <> '', True);
  Request := 'GET / HTTP/1.0'#13#10#13#10;
  Socket.ComServer.SendString(Request);
  Expect('finished', Listener.Finished, True);
  Expect('ReceiveString', Copy(Socket.ComServer.ReceiveString, 1, 9), 'HTTP/1.1 ');
  Expect('TextData', Copy(Listener.Received, 1, 9), 'HTTP/1.1 ');
  Socket.ComServer.CloseSocket;
  Socket.Free;
  Listener.Free;
end;

procedure CatchError;
const
  SubscriptFailure = HResult($800A0009);
var
  Code: Integer;
begin
  Code := 0;
  try
    CoKseF_comm.Create.TimestampToUnixMs('2025-07-11T12:23:56+00:00');
  except
    on E: EOleException do
    begin
      Code := E.ErrorCode;
      Expect('source', E.Source, 'KseF_comm.TimestampToUnixMs');
      Expect('description', Copy(E.Message, 1, 26), 'Niepoprawny znacznik czasu');
    end;
  end;
  Expect('error', Code, SubscriptFailure);
end;

begin
  CoInitialize(nil);
  UseFacade;
  UseRegistry;
  UseKsef;
  UseBarcodes;
  UseMail;
  UsePdf;
  UseSocket(ParamStr(1));
  CatchError;
  WriteLn('KONIEC');
end.
