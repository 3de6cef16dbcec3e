-- The FINFO job of the data folder as a set: COPY into a table of lines, and a statement for the changed and the new
-- rows of each table. Rates, markups and rounding are those of the company that bench_data makes.
BEGIN;
CREATE TEMP TABLE line (ord integer GENERATED ALWAYS AS IDENTITY, t text);
\copy line (t) FROM pstdin WITH (ENCODING 'UTF8')
CREATE FUNCTION pg_temp.rounded(price double precision) RETURNS double precision IMMUTABLE LANGUAGE sql AS $$
  SELECT CASE WHEN price BETWEEN 0 AND 9.99 THEN round(price * 10) / 10
              WHEN price BETWEEN 10 AND 99.99 THEN floor(price)
                + CASE WHEN price - floor(price) < 0.25 THEN 0 WHEN price - floor(price) < 0.75 THEN 0.5 ELSE 1 END
              WHEN price BETWEEN 100 AND 999.99 THEN round(price)
              WHEN price BETWEEN 1000 AND 9999.99 THEN round(price / 10) * 10
              WHEN price BETWEEN 10000 AND 99999.99 THEN round(price / 100) * 100
              ELSE round(price * 100) / 100 END $$;
CREATE TEMP TABLE article AS
  SELECT ord, btrim(substr(t, 29, 18)) COLLATE "Svenska" AS number, btrim(substr(t, 11, 18)) AS article,
         btrim(substr(t, 116, 35)) AS name, btrim(substr(t, 254, 3)) AS unit, substr(t, 29, 5) AS pgroup,
         substr(t, 246, 8)::float8 / 100 AS purchase, substr(t, 329, 8)::float8 / 100 AS sales,
         to_date(substr(t, 264, 8), 'YYYYMMDD') AS day, substr(t, 296, 11)::float8 / 1000000 AS quantity,
         btrim(substr(t, 307, 3)) AS pack, btrim(substr(t, 65, 6)) AS micronic, btrim(substr(t, 71, 15)) AS ean
  FROM line WHERE btrim(substr(t, 1, 10)) = 'AA' AND substr(t, 29, 7) BETWEEN '1000000' AND '9499999';
ANALYZE article;

CREATE TEMP TABLE fresh AS
  SELECT a.* FROM article a WHERE NOT EXISTS (SELECT FROM "Produkt" p WHERE p."Nummer" = a.number);
UPDATE "Produkt" p SET
  "Nummer" = a.number, "Benämning" = a.name, "InköpsEnhet" = a.unit, "Försäljenhet" = a.unit, "Statistikenhet" = a.unit,
  "Grupp" = a.pgroup, "Leverantör" = '1001', "Levartikelnr" = a.article, "Prisändrdat" = a.day, "Inpris" = a.purchase,
  "Antal1" = CASE WHEN a.quantity <> 1 THEN a.quantity ELSE p."Antal1" END,
  "Rubrik0" = CASE WHEN a.quantity <> 1 THEN a.pack ELSE p."Rubrik0" END,
  "Rubrik1" = CASE WHEN a.quantity <> 1 THEN a.pack ELSE p."Rubrik1" END,
  "1Utpris" = pg_temp.rounded(CASE WHEN a.sales <> 0 THEN a.sales
    ELSE (a.purchase - a.purchase * p."InprisProc" / 100) * (1 + p."1Pålägg"::float8 / 100) END),
  "Försäljning" = '', "Förändringsdatum" = current_date
FROM article a WHERE p."Nummer" = a.number;
INSERT INTO "Produkt" ("Nummer", "Benämning", "InköpsEnhet", "Försäljenhet", "Statistikenhet", "Grupp", "Leverantör",
  "Levartikelnr", "Prisändrdat", "Inpris", "Antal1", "Rubrik0", "Rubrik1", "1Utpris", "Försäljning", "Förändringsdatum",
  "Inköpsfaktor", "Försäljfaktor", "Statistikfaktor", "Momskod", "Lagervärde", "Valutakod", "Prislista", "LagerArtikel",
  "2Pålägg", "3Pålägg", "Produkttyp", "Värderingsnivå")
SELECT number, name, unit, unit, unit, pgroup, '1001', article, day, purchase,
  CASE WHEN quantity <> 1 THEN quantity ELSE 0 END, CASE WHEN quantity <> 1 THEN pack END, CASE WHEN quantity <> 1 THEN pack END,
  pg_temp.rounded(sales), '', current_date, 1, 1, 1, '1', 'I', 'SEK', true, true, 12.5, 35, '1', 9 FROM fresh ORDER BY ord;

UPDATE "Levprislista" l SET "Datum" = a.day, "RabattKod" = '', "Inpris" = a.purchase, "InprisFöreRabatt" = a.purchase,
  "Utpris1" = pg_temp.rounded(a.sales)
FROM article a WHERE l."Produktnr" = a.number AND l."Leverantör" = '1001';
INSERT INTO "Levprislista" ("Produktnr", "Leverantör", "Levartikelnr", "Datum", "RabattKod", "Inpris", "InprisFöreRabatt", "Utpris1")
SELECT a.number, '1001', a.number, a.day, '', a.purchase, a.purchase, pg_temp.rounded(a.sales) FROM article a
WHERE NOT EXISTS (SELECT FROM "Levprislista" l WHERE l."Produktnr" = a.number AND l."Leverantör" = '1001') ORDER BY ord;

CREATE TEMP TABLE alternative AS
  SELECT ord, 2 AS heading, number, micronic AS other FROM article UNION ALL SELECT ord, 1, number, ean FROM article;
ANALYZE alternative;
UPDATE "Prodaltprodnr" n SET "Alternativnr" = a.other FROM alternative a
WHERE n."Produktnr" = a.number AND n."Nummer" = a.heading AND n."Alternativnr" IS DISTINCT FROM a.other;
INSERT INTO "Prodaltprodnr" ("Produktnr", "Nummer", "Alternativnr")
SELECT number, heading, other FROM alternative a
WHERE NOT EXISTS (SELECT FROM "Prodaltprodnr" n WHERE n."Produktnr" = a.number AND n."Nummer" = a.heading)
ORDER BY ord, heading DESC;
COMMIT;
