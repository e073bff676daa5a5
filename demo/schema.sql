-- The tables of a host as the library knows them, in words that SQL Server takes; a real host has more columns,
-- and identity columns for keys. For SQLite, behind the development ADO provider and the native door, only the
-- "(max)" goes: both read the declared types and lengths (a column declared DATETIME gives dates, BIT gives
-- booleans, NVARCHAR without a length takes any text).

-- Sales documents: invoices, corrections, donations and their corrections. The KSeF columns are the same in all.
create table dok_fak (
    ddout_id integer primary key,
    ddout_numer nvarchar(100),
    ddout_data_wyst datetime,
    numer_ksef nvarchar(50),
    NumerRef_ksef nvarchar(50),
    HashFaktury nvarchar(50),
    status_ksef nvarchar(10),
    StatusStr_ksef nvarchar(500),
    UPO_ksef nvarchar(max),
    Export_Opis_bledu_ksef nvarchar(max),
    DATA_OPERACJI datetime,
    xml_ksef nvarchar(max),
    ksef_qrcode2 nvarchar(max)
);
create table dok_KFA (
    ddout_id integer primary key, ddout_numer nvarchar(100), ddout_data_wyst datetime, numer_ksef nvarchar(50),
    NumerRef_ksef nvarchar(50), HashFaktury nvarchar(50), status_ksef nvarchar(10), StatusStr_ksef nvarchar(500),
    UPO_ksef nvarchar(max), Export_Opis_bledu_ksef nvarchar(max), DATA_OPERACJI datetime, xml_ksef nvarchar(max), ksef_qrcode2 nvarchar(max)
);
create table dok_dar (
    ddout_id integer primary key, ddout_numer nvarchar(100), ddout_data_wyst datetime, numer_ksef nvarchar(50),
    NumerRef_ksef nvarchar(50), HashFaktury nvarchar(50), status_ksef nvarchar(10), StatusStr_ksef nvarchar(500),
    UPO_ksef nvarchar(max), Export_Opis_bledu_ksef nvarchar(max), DATA_OPERACJI datetime, xml_ksef nvarchar(max), ksef_qrcode2 nvarchar(max)
);
create table dok_kda (
    ddout_id integer primary key, ddout_numer nvarchar(100), ddout_data_wyst datetime, numer_ksef nvarchar(50),
    NumerRef_ksef nvarchar(50), HashFaktury nvarchar(50), status_ksef nvarchar(10), StatusStr_ksef nvarchar(500),
    UPO_ksef nvarchar(max), Export_Opis_bledu_ksef nvarchar(max), DATA_OPERACJI datetime, xml_ksef nvarchar(max), ksef_qrcode2 nvarchar(max)
);

-- Batch sessions.
create table Ksef_sesje (id integer primary key, RefNumber nvarchar(50));

-- Purchase invoices: one row for each that was seen in KSeF, who has to approve it, and the rules for that.
create table DOK_ZDJECIA (
    countt integer primary key,
    in_id_grprod int,
    ksefniezgodnyidwew int,
    ksefNumber nvarchar(50),
    in_numer_ksef nvarchar(50),
    ksefNumber_json nvarchar(max),
    ksefHashFaktury nvarchar(50),
    In_Konh_id int,
    dok_rodz_id int,
    dok_ID int,
    data datetime,
    In_Data_Wyst datetime,
    In_nrdok nvarchar(256),
    In_NEtto nvarchar(30),
    In_Vat nvarchar(30),
    In_nip nvarchar(20),
    In_idwew nvarchar(50),
    In_rolainna nvarchar(256),
    In_podmiot3zawiera nvarchar(256),
    User_ids_do_podpisu nvarchar(500),
    ZDJECIE_NAZWAPLIKU nvarchar(256),
    ZDJECIE_datawydruku datetime,
    ZDJECIE_RODZAJ nvarchar(10),
    ZDJECIE_kierunek nvarchar(20),
    dane nvarchar(max)
);
create table dok_zdjecia_podpisy (id integer primary key, id_zdjecia int, user_id int, etappodpisow int);
create table DOK_IMPORTY (
    id integer primary key,
    Set_User_id_podpisuStr nvarchar(200),
    JESLI_KONH_ID int default 0,
    JESLI_IDWEW nvarchar(50) default '',
    JESLI_ROLAINNA nvarchar(256) default '',
    JESLI_podmiot3zawiera nvarchar(256) default '',
    JESLI_TEXT_W_NUMERZE_DOK nvarchar(256) default ''
);

-- Contractors and settings.
create table kontrahenci (
    konh_id integer primary key, kartotekakh nvarchar(20), konh_activ bit, konh_nip nvarchar(20), konh_nazwa nvarchar(512)
);
create table Kontrahenci_parametry (konh_id int, czy_eksf bit);
create table setup (nazwa nvarchar(50), wartosc nvarchar(500));
create table uzytkownicy_setup (user_id int, nazwa nvarchar(50), wartosc nvarchar(max));

insert into dok_fak (ddout_id, ddout_numer, ddout_data_wyst) values
    (1001, 'FV/2026/11/0147', current_timestamp),
    -- Day and month alike, since SQL Server reads such a date in the order of the user's language.
    (1002, 'FV/2025/11/0093', '2025-11-11');
insert into dok_KFA (ddout_id, ddout_numer, ddout_data_wyst) values (2001, 'FK/2026/11/0009', current_timestamp);
insert into kontrahenci values (1, 'KD001', 1, '951-204-43-76', 'Księgarnia Źródło Łucja Gęś-Wąsowicz');
insert into Kontrahenci_parametry values (1, 1);
