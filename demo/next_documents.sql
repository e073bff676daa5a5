-- What the company does after its first invoices: three that go to KSeF as a package, one issued offline,
-- and what the host knows of a seller: a contractor, and who approves what comes from there.
insert into dok_fak (ddout_id, ddout_numer, ddout_data_wyst) values
    (1003, 'FV/2026/11/0148', current_timestamp),
    (1004, 'FV/2026/11/0149', current_timestamp),
    (1005, 'FV/2026/11/0150', current_timestamp),
    (1006, 'FV/2026/11/0151', current_timestamp);
insert into kontrahenci values (2, 'KD002', 1, '735-276-52-25', 'Tartak Łęgowo');
insert into Kontrahenci_parametry values (2, 1);
insert into DOK_IMPORTY (Set_User_id_podpisuStr, JESLI_KONH_ID) values ('7,12', 2);
