CREATE TABLE hosts (ativo TEXT(1), host TEXT(100), basededados TEXT(100), usuarioD TEXT(100), Senha TEXT(100));
INSERT INTO hosts (host, basededados, usuarioD, Senha) VALUES ('127.0.0.70', 'estacao_antiga', 'posto', 'posto1234');
INSERT INTO hosts (ativo, host, basededados, usuarioD, Senha) VALUES ('X', '127.0.0.77', 'estacao', 'posto', 'posto1234');
INSERT INTO hosts (host, basededados, usuarioD, Senha) VALUES ('127.0.0.78', 'estacao_reserva', 'posto', 'posto1234');
