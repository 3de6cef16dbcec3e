-- The FINFO job of the data folder as a set, in one transaction of the sqlite3 shell: a table of lines, and a statement for
-- the changed and the new rows of each table. LINES is the price file in UTF-8, TODAY the day of the run. Rates, markups and
-- rounding are those of the company that bench_data makes.
PRAGMA temp_store = memory;
.mode ascii
.separator "\037" "\n"
BEGIN;
CREATE TEMP TABLE line (t text);
.import LINES line
-- Halves go to the even number, SQLite's away from zero; half units go up.
CREATE TEMP TABLE bound (low real, high real, per real, even integer);
INSERT INTO bound VALUES (0, 10, 10, 1), (10, 100, 2, 0), (100, 1000, 1, 1), (1000, 10000, 0.1, 1), (10000, 100000, 0.01, 1),
  (100000, 1e15, 100, 1);
CREATE TEMP TABLE article AS
  SELECT rowid AS ord, CAST(trim(substr(t, 29, 18)) AS text) AS number, trim(substr(t, 11, 18)) AS article,
         trim(substr(t, 116, 35)) AS name, trim(substr(t, 254, 3)) AS unit, substr(t, 29, 5) AS pgroup,
         substr(t, 246, 8) / 100.0 AS purchase, substr(t, 329, 8) / 100.0 AS sales,
         substr(t, 264, 4) || '-' || substr(t, 268, 2) || '-' || substr(t, 270, 2) AS day,
         substr(t, 296, 11) / 1000000.0 AS quantity, trim(substr(t, 307, 3)) AS pack, trim(substr(t, 65, 6)) AS micronic,
         trim(substr(t, 71, 15)) AS ean, NULL AS price
  FROM line WHERE trim(substr(t, 1, 10)) = 'AA' AND substr(t, 29, 7) BETWEEN '1000000' AND '9499999';
UPDATE article SET price = (round(sales * per) - (even AND sales * per % 2 = 0 AND sales * per - CAST(sales * per AS integer) = 0.5)) / per
FROM bound WHERE sales >= low AND sales < high;

CREATE TEMP TABLE fresh AS
  SELECT a.* FROM article a WHERE NOT EXISTS (SELECT 1 FROM Produkt p WHERE p.Nummer = a.number);
UPDATE Produkt AS p SET
  Nummer = a.number, Benämning = a.name, InköpsEnhet = a.unit, Försäljenhet = a.unit, Statistikenhet = a.unit,
  Grupp = a.pgroup, Leverantör = '1001', Levartikelnr = a.article, Prisändrdat = a.day, Inpris = a.purchase,
  Antal1 = iif(a.quantity <> 1, a.quantity, p.Antal1), Rubrik0 = iif(a.quantity <> 1, a.pack, p.Rubrik0),
  Rubrik1 = iif(a.quantity <> 1, a.pack, p.Rubrik1),
  "1Utpris" = iif(a.sales <> 0, a.price, (SELECT (round(x * per) - (even AND x * per % 2 = 0 AND x * per - CAST(x * per AS integer) = 0.5)) / per
    FROM bound, (SELECT (a.purchase - a.purchase * p.InprisProc / 100.0) * (1 + p."1Pålägg" / 100.0) AS x)
    WHERE x >= low AND x < high)),
  Försäljning = '', Förändringsdatum = 'TODAY'
FROM article a WHERE p.Nummer = a.number;
INSERT INTO Produkt (Nummer, Benämning, InköpsEnhet, Försäljenhet, Statistikenhet, Grupp, Leverantör,
  Levartikelnr, Prisändrdat, Inpris, Antal1, Rubrik0, Rubrik1, "1Utpris", Försäljning, Förändringsdatum,
  Inköpsfaktor, Försäljfaktor, Statistikfaktor, Momskod, Lagervärde, Valutakod, Prislista, LagerArtikel,
  "2Pålägg", "3Pålägg", Produkttyp, Värderingsnivå)
SELECT number, name, unit, unit, unit, pgroup, '1001', article, day, purchase,
  iif(quantity <> 1, quantity, 0), iif(quantity <> 1, pack, NULL), iif(quantity <> 1, pack, NULL),
  price, '', 'TODAY', 1, 1, 1, '1', 'I', 'SEK', 1, 1, 12.5, 35, '1', 9 FROM fresh ORDER BY ord;

UPDATE Levprislista AS l SET Datum = a.day, RabattKod = '', Inpris = a.purchase, InprisFöreRabatt = a.purchase,
  Utpris1 = a.price
FROM article a WHERE l.Produktnr = a.number AND l.Leverantör = '1001';
INSERT INTO Levprislista (Produktnr, Leverantör, Levartikelnr, Datum, RabattKod, Inpris, InprisFöreRabatt, Utpris1)
SELECT a.number, '1001', a.number, a.day, '', a.purchase, a.purchase, a.price FROM article a
WHERE NOT EXISTS (SELECT 1 FROM Levprislista l WHERE l.Produktnr = a.number AND l.Leverantör = '1001') ORDER BY ord;

CREATE TEMP TABLE alternative AS
  SELECT ord, 2 AS heading, number, micronic AS other FROM article UNION ALL SELECT ord, 1, number, ean FROM article;
UPDATE Prodaltprodnr AS n SET Alternativnr = a.other FROM alternative a
WHERE n.Produktnr = a.number AND n.Nummer = a.heading AND n.Alternativnr IS NOT a.other;
INSERT INTO Prodaltprodnr (Produktnr, Nummer, Alternativnr)
SELECT number, heading, other FROM alternative a
WHERE NOT EXISTS (SELECT 1 FROM Prodaltprodnr n WHERE n.Produktnr = a.number AND n.Nummer = a.heading)
ORDER BY ord, heading DESC;
COMMIT;
