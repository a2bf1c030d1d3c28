SELECT * FROM Leitura WHERE codigo = 7
SELECT codigo, nome AS n, quando + 1, [obs] FROM Leitura AS x WHERE x.nome LIKE '%g[a-c]_%' ORDER BY nome DESC, 1
SELECT Count(*), Sum(codigo), Avg(n), Min(nome), Max(quando) FROM Leitura WHERE ligado OR codigo BETWEEN 3 AND 40
SELECT Year(quando) AS ano, Month(quando), Sum(codigo * 2 - 1) FROM Leitura GROUP BY Year(quando), Month(quando) HAVING Count(*) > 1 ORDER BY 3 DESC
SELECT DISTINCT Left(nome, 2), ligado FROM Leitura ORDER BY Left(nome, 2) DESC
SELECT TOP 5 nome, Len(obs) FROM Leitura ORDER BY quando DESC, codigo
SELECT TOP 20 PERCENT * FROM Leitura ORDER BY nome
SELECT Format(codigo / 3, '##,#0.00'), Format(quando, 'dd/mm/yyyy hh:nn:ss'), Format(nome, '@@@@') FROM Leitura
SELECT Nz(nome, 'x') & Mid(nome, 2, 3) & Right(nome, 4) & Trim(' a ') & UCase(nome) & LCase(nome) FROM Leitura
SELECT Val(nome), Abs(-codigo), Int(codigo / 7), Fix(-1.5), IIf(ligado, 1, 2.5), IsNull(obs), Day('15/03/2024') FROM Leitura
SELECT 1 + 2 * 3 ^ 2 \ 4 MOD 5 - -6, 922337203685477.5807, 'it''s', #03/15/2024 06:30#, True XOR Not False
SELECT nome FROM Leitura WHERE codigo IN (1, 2, Null) AND nome IS NOT NULL AND NOT nome NOT LIKE '[!x]%'
INSERT INTO Leitura (nome, quando, obs, ligado) VALUES ('Ação', '15/03/2024', 'texto longo', True)
INSERT INTO Outra VALUES (1.5)
INSERT INTO Outra (n) SELECT codigo * 10 FROM Leitura WHERE codigo < 5
UPDATE Leitura SET nome = nome & 'x', quando = #01/02/2024#, obs = Null WHERE codigo > 80
UPDATE Outra SET n = n ^ 2
DELETE FROM Leitura WHERE codigo = 3 OR nome = 'b'
DELETE * FROM Outra WHERE n > 1e10
CREATE TABLE Nova (a COUNTER PRIMARY KEY, b TEXT(20) NOT NULL DEFAULT 'x', c CURRENCY, d DECIMAL(18, 4), e DATETIME, f YESNO, g MEMO, h SINGLE, i GUID)
CREATE UNIQUE INDEX porB ON Nova (b DESC, c) WITH IGNORE NULL
INSERT INTO Nova (b, c, d) VALUES ('um', '1.234,56785', 12345678901234.5678)
SELECT a, Sum(c), Max(d), Avg(h) FROM Nova GROUP BY a, i
ALTER TABLE Nova ADD COLUMN j DOUBLE DEFAULT -1.5, k BYTE
DROP TABLE Nova
SELECT a.x FROM a INNER JOIN b ON a.x = b.y UNION SELECT 1
