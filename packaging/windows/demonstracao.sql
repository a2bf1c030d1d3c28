UPDATE Leitura SET DataLT = DataLT + (Date() - 1 - #01/31/2026#);
UPDATE PlanilhaPosto SET DataInsert = DataInsert + (Date() - 1 - #01/31/2026#);
UPDATE ControleProdComb SET DataOP = DataOP + (Date() - 1 - #01/31/2026#);
UPDATE ExcluidosLeituraBomba SET DataE = DataE + (Date() - 1 - #01/31/2026#);
UPDATE tabafer SET dataf = dataf + (Date() - 1 - #01/31/2026#);
UPDATE DatEmit SET RazaoSocial = 'Posto de demonstração (senha 1234)';
