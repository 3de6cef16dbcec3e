-- The FINFO job of the data folder as a set: LOAD DATA into a table of lines, and a statement for the changed and the new
-- rows of each table. Rates, markups and rounding are those of the company that bench_data makes. PRICES is the file.
SET NAMES utf8mb4 COLLATE utf8mb4_uca1400_swedish_nopad_as_ci;
SET autocommit = 0;
CREATE TEMPORARY TABLE line (ord integer PRIMARY KEY AUTO_INCREMENT, t varchar(400)) DEFAULT CHARSET utf8mb4
  COLLATE utf8mb4_uca1400_swedish_nopad_as_ci;
LOAD DATA LOCAL INFILE 'PRICES' INTO TABLE line CHARACTER SET utf8mb4
  FIELDS TERMINATED BY '\t' ESCAPED BY '' LINES TERMINATED BY '\r\n' (t);
CREATE TEMPORARY TABLE article (PRIMARY KEY (ord), UNIQUE (number)) DEFAULT CHARSET utf8mb4 COLLATE utf8mb4_uca1400_swedish_nopad_as_ci AS
  SELECT *, CASE WHEN sales BETWEEN 0 AND 9.99 THEN round(sales * 10) / 10
              WHEN sales BETWEEN 10 AND 99.99 THEN floor(sales)
                + CASE WHEN sales - floor(sales) < 0.25 THEN 0 WHEN sales - floor(sales) < 0.75 THEN 0.5e0 ELSE 1 END
              WHEN sales BETWEEN 100 AND 999.99 THEN round(sales)
              WHEN sales BETWEEN 1000 AND 9999.99 THEN round(sales / 10) * 10
              WHEN sales BETWEEN 10000 AND 99999.99 THEN round(sales / 100) * 100
              ELSE round(sales * 100) / 100 END AS rounded
  FROM (SELECT ord, CAST(trim(substr(t, 29, 18)) AS char(20)) AS number, trim(substr(t, 11, 18)) AS article,
         trim(substr(t, 116, 35)) AS name, trim(substr(t, 254, 3)) AS unit, substr(t, 29, 5) AS pgroup,
         CAST(substr(t, 246, 8) AS double) / 100 AS purchase, CAST(substr(t, 329, 8) AS double) / 100 AS sales,
         CAST(substr(t, 264, 8) AS date) AS day, CAST(substr(t, 296, 11) AS double) / 1000000 AS quantity,
         trim(substr(t, 307, 3)) AS pack, trim(substr(t, 65, 6)) AS micronic, trim(substr(t, 71, 15)) AS ean
  FROM line WHERE trim(substr(t, 1, 10)) = 'AA' AND substr(t, 29, 7) BETWEEN '1000000' AND '9499999') AS a;
CREATE TEMPORARY TABLE fresh AS
  SELECT a.* FROM article a WHERE NOT EXISTS (SELECT 1 FROM Produkt p WHERE p.Nummer = a.number);

UPDATE Produkt p JOIN article a ON p.Nummer = a.number
JOIN (SELECT ID, CASE WHEN price BETWEEN 0 AND 9.99 THEN round(price * 10) / 10
              WHEN price BETWEEN 10 AND 99.99 THEN floor(price)
                + CASE WHEN price - floor(price) < 0.25 THEN 0 WHEN price - floor(price) < 0.75 THEN 0.5e0 ELSE 1 END
              WHEN price BETWEEN 100 AND 999.99 THEN round(price)
              WHEN price BETWEEN 1000 AND 9999.99 THEN round(price / 10) * 10
              WHEN price BETWEEN 10000 AND 99999.99 THEN round(price / 100) * 100
              ELSE round(price * 100) / 100 END AS rounded
  FROM (SELECT q.ID, (b.purchase - b.purchase * q.InprisProc / 100) * (1 + CAST(q.`1Pålägg` AS double) / 100) AS price
        FROM Produkt q JOIN article b ON q.Nummer = b.number WHERE b.sales = 0
        UNION ALL SELECT q.ID, b.sales FROM Produkt q JOIN article b ON q.Nummer = b.number WHERE b.sales <> 0) AS priced) AS r
  ON r.ID = p.ID
SET p.Nummer = a.number, p.Benämning = a.name, p.InköpsEnhet = a.unit, p.Försäljenhet = a.unit, p.Statistikenhet = a.unit,
  p.Grupp = a.pgroup, p.Leverantör = '1001', p.Levartikelnr = a.article, p.Prisändrdat = a.day, p.Inpris = a.purchase,
  p.Rubrik0 = IF(a.quantity <> 1, a.pack, p.Rubrik0), p.Rubrik1 = IF(a.quantity <> 1, a.pack, p.Rubrik1),
  p.Antal1 = IF(a.quantity <> 1, a.quantity, p.Antal1), p.`1Utpris` = r.rounded,
  p.Försäljning = '', p.Förändringsdatum = current_date;
INSERT INTO Produkt (Nummer, Benämning, InköpsEnhet, Försäljenhet, Statistikenhet, Grupp, Leverantör,
  Levartikelnr, Prisändrdat, Inpris, Antal1, Rubrik0, Rubrik1, `1Utpris`, Försäljning, Förändringsdatum,
  Inköpsfaktor, Försäljfaktor, Statistikfaktor, Momskod, Lagervärde, Valutakod, Prislista, LagerArtikel,
  `2Pålägg`, `3Pålägg`, Produkttyp, Värderingsnivå)
SELECT number, name, unit, unit, unit, pgroup, '1001', article, day, purchase, IF(quantity <> 1, quantity, 0),
  IF(quantity <> 1, pack, NULL), IF(quantity <> 1, pack, NULL), rounded, '', current_date,
  1, 1, 1, '1', 'I', 'SEK', 1, 1, 12.5, 35, '1', 9 FROM fresh ORDER BY ord;

UPDATE Levprislista l JOIN article a ON l.Produktnr = a.number AND l.Leverantör = '1001'
SET l.Datum = a.day, l.RabattKod = '', l.Inpris = a.purchase, l.InprisFöreRabatt = a.purchase, l.Utpris1 = a.rounded;
INSERT INTO Levprislista (Produktnr, Leverantör, Levartikelnr, Datum, RabattKod, Inpris, InprisFöreRabatt, Utpris1)
SELECT a.number, '1001', a.number, a.day, '', a.purchase, a.purchase, a.rounded FROM article a
LEFT JOIN Levprislista l ON l.Produktnr = a.number AND l.Leverantör = '1001' WHERE l.ID IS NULL ORDER BY a.ord;

CREATE TEMPORARY TABLE alternative DEFAULT CHARSET utf8mb4 COLLATE utf8mb4_uca1400_swedish_nopad_as_ci AS
  SELECT ord, 2 AS heading, number, micronic AS other FROM article UNION ALL SELECT ord, 1, number, ean FROM article;
UPDATE Prodaltprodnr n JOIN alternative a ON n.Produktnr = a.number AND n.Nummer = a.heading
SET n.Alternativnr = a.other WHERE NOT BINARY n.Alternativnr <=> BINARY a.other;
INSERT INTO Prodaltprodnr (Produktnr, Nummer, Alternativnr)
SELECT a.number, a.heading, a.other FROM alternative a
LEFT JOIN Prodaltprodnr n ON n.Produktnr = a.number AND n.Nummer = a.heading WHERE n.ID IS NULL
ORDER BY a.ord, a.heading DESC;
COMMIT;
