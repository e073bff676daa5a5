{ import_library LIBRARY.tlb UNIT.pas: the unit with which a program uses a type library, by the importer that comes with
  Free Pascal. }
program import_library;

{$mode objfpc}{$H+}

uses
  ActiveX, SysUtils, Classes, TypeLib;

var
  Importer: TTypeLibImporter;
begin
  CoInitialize(nil);
  Importer := TTypeLibImporter.Create(nil);
  try
    Importer.InputFileName := UTF8Decode(ParamStr(1));
    Importer.AppendVersionNumber := False;
    Importer.Execute;
    Importer.UnitSource.SaveToFile(ParamStr(2));
  finally
    Importer.Free;
  end;
end.
