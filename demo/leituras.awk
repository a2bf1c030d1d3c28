# Ninety days at the station: pumps, their closed readings, deliveries of fuel, dip readings, miscellaneous items and
# the log of deletions. Variables: backend (access or mysql), today, last (the last closed day, the day before today when
# empty); days as YYYY-MM-DD.

function add_product(code, description, tank, price, earlier_price, sold, load, supplier) {
    products++
    p_code[products] = code
    p_description[products] = description
    p_tank[products] = tank
    p_price[products] = price                  # thousandths of R$
    p_earlier[products] = earlier_price
    p_sold[products] = sold                    # litres a day and pump, on an ordinary day
    p_load[products] = load                    # litres of one delivery
    p_supplier[products] = supplier
    insert("CadProdComb", "Descritivo, codprod, valor, codigoEstoque", quoted(description) ", " code ", " \
        sprintf("%.3f", price / 1000) ", " code)
}

function add_pump(product, reading) {
    pumps++
    b_product[pumps] = product
    b_reading[pumps] = reading                 # hundredths of a litre
    b_description[pumps] = sprintf("Bomba %02d - %s", pumps, p_description[product])
}

function add_item(code, description, quantity) {
    items++
    i_code[items] = code
    i_description[items] = description
    i_quantity[items] = quantity
}

function ledger(code, day, description, supplier, note, credit, debit) {
    insert("ControleProdComb", "CodProd, DataOP, descritivo, fornecedor, NumeroNota, cred, deb", \
        code ", " quoted(date_text(day)) ", " quoted(description) ", " quoted(supplier) ", " quoted(note) ", " \
        credit ", " debit)
}

function set_up_station() {
    add_product(101, "Gasolina comum", 1, 5899, 5799, 1080, 10000, "Distribuidora Serra Azul de Combustíveis Ltda")
    add_product(102, "Gasolina aditivada", 3, 6099, 5999, 390, 5000, "Distribuidora Serra Azul de Combustíveis Ltda")
    add_product(103, "Etanol hidratado", 3, 4199, 4099, 470, 5000, "Usina Açucareira Boa Esperança")
    add_product(104, "Óleo diesel S10", 2, 6149, 6199, 830, 5000, "Petróleo Vale do Jequitibá S.A.")
    add_pump(1, 61238417)
    add_pump(1, 58810950)
    add_pump(1, 40197725)
    add_pump(1, 39044281)
    add_pump(2, 18211927)
    add_pump(2, 17041688)
    add_pump(3, 22987304)
    add_pump(3, 21566092)
    add_pump(4, 35120866)
    add_pump(4, 30777143)
    add_item(11, "Óleo lubrificante 20W50 mineral 1 L", 36)
    add_item(13, "Óleo lubrificante 5W30 sintético 1 L", 24)
    add_item(20, "Aditivo para radiador concentrado 1 L", 18)
    add_item(21, "Água desmineralizada 1 L", 30)
    add_item(36, "Aromatizante pinho", 24)
    add_item(45, "Água mineral sem gás 500 mL", 96)
    stock[1] = 2050000
    stock[2] = 640000
    stock[3] = 710000
    stock[4] = 980000
}

# Readings of one day; takes the litres out of the tanks.
function close_day(day,    pump, product, share, litres, before, price) {
    share = weekday(day) == 0 ? 0.72 : weekday(day) == 5 || weekday(day) == 6 ? 1.18 : 1
    for (pump = 1; pump <= pumps; pump++) {
        product = b_product[pump]
        litres = int(p_sold[product] * 100 * share * (0.8 + 0.4 * chance()))
        before = b_reading[pump]
        b_reading[pump] = before + litres
        stock[product] -= litres
        price = day < price_change ? p_earlier[product] : p_price[product]
        insert("Leitura", "DataLT,cdgBomba,LeitAnt,LeitAtu,Saldo,Obs,tanq, afericao", \
            quoted(date_text(day)) "," quoted(pump) "," quoted(amount(before)) "," quoted(amount(b_reading[pump])) "," \
            quoted(amount(litres)) "," quoted(amount(int(price / 10 + 0.5))) "," \
            quoted("TANQUE_" p_tank[product]) "," quoted("0"))
    }
}

# A tanker comes for each product that would not last two more days.
function receive_fuel(day,    product, need) {
    for (product = 1; product <= products; product++) {
        need = pumps_of[product] * p_sold[product] * 100 * 2.4
        while (stock[product] < need) {
            stock[product] += p_load[product] * 100
            note += 1 + int(chance() * 40)
            ledger(product, day, p_description[product], p_supplier[product], sprintf("%06d", note), p_load[product], 0)
        }
    }
}

function gauge_tanks(day,    tank, product, held, depth) {
    for (tank = 1; tank <= tanks; tank++) {
        held = 0
        for (product = 1; product <= products; product++)
            if (p_tank[product] == tank)
                held += stock[product]
        depth = depth_of(tank, held / 100)
        insert("tabafer", "tanque, dataf, cmt, saldo", quoted("TANQUE_" tank) ", " quoted(date_text(day)) ", " \
            depth ", " volume(tank, depth))
    }
}

function issue_items(day,    item) {
    for (item = 1; item <= items; item++)
        if (chance() < 0.12 && i_quantity[item] > 4) {
            i_quantity[item] -= 1
            ledger(i_code[item], day, i_description[item], "OperEmpresa", "", 0, 1)
        }
}

function log_deletion(pump, day, litres, price) {
    insert("ExcluidosLeituraBomba", "produto, DataE, leitura, total", quoted(b_description[pump]) ", " \
        quoted(short_date(day)) ", " quoted(amount(litres)) ", " quoted(sprintf("%d,%03d", price / 1000, price % 1000)))
}

BEGIN {
    split(last == "" ? today : last, part, "-")
    last_day = days_of(part[1] + 0, part[2] + 0, part[3] + 0) - (last == "" ? 1 : 0)
    first_day = last_day - 89
    price_change = last_day - 40
    seed = 20011 + last_day
    note = 4800 + last_day % 500
    set_up_tanks()
    set_up_station()
    write_gauge_tables()
    for (pump = 1; pump <= pumps; pump++)
        pumps_of[b_product[pump]]++
    for (item = 1; item <= items; item++)
        ledger(i_code[item], first_day, i_description[item], "OperEmpresa", "0001", i_quantity[item], 0)
    for (day = first_day; day <= last_day; day++) {
        receive_fuel(day)
        close_day(day)
        gauge_tanks(day)
        issue_items(day)
    }
    for (pump = 1; pump <= pumps; pump++)
        insert("PlanilhaPosto", "numeroDispositivo, Descritivo, Leitura, DataInsert, ProdVinculado, tanq", \
            pump ", " quoted(b_description[pump]) ", " quoted(plain(b_reading[pump])) ", " \
            quoted(date_text(last_day)) ", " p_code[b_product[pump]] ", " quoted("TANQUE_" p_tank[b_product[pump]]))
    for (product = 1; product <= products; product++)
        print "UPDATE Estoque SET quantidade = " sprintf("%.2f", stock[product] / 100) " WHERE codigo = " p_code[product] ";"
    for (item = 1; item <= items; item++)
        insert("EstoqueDiversos", "codigo, discriminacao, quantidade", i_code[item] ", " quoted(i_description[item]) ", " \
            quoted(amount(i_quantity[item] * 100)))
    log_deletion(2, last_day - 71, 34567, p_earlier[1])
    log_deletion(9, last_day - 52, 120150, p_earlier[4])
    log_deletion(5, last_day - 33, 41208, p_price[2])
    log_deletion(7, last_day - 12, 9850, p_price[3])
    log_deletion(1, last_day - 4, 113990, p_price[1])
}
