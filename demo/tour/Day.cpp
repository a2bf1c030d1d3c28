#include "tour/Operator.h"

// What happens at the station from morning to evening, with what has to come of it.

namespace tour {

namespace {

const QString Principal = QStringLiteral("frmprincipal");

/// "1.234,50" in hundredths.
qint64 hundredths(QString amount)
{
    return amount.remove(u'.').remove(u',').toLongLong();
}

/// As an operator types it: "1234,50".
QString typed(qint64 hundredths)
{
    return QStringLiteral("%1,%2").arg(hundredths / 100).arg(hundredths % 100, 2, 10, QLatin1Char('0'));
}

QString shown(qint64 hundredths)
{
    const QLocale brazil(QLocale::Portuguese, QLocale::Brazil);
    return brazil.toString(hundredths / 100) + typed(hundredths).right(3);
}

/// Litres that went through a pump today.
qint64 litresOf(int pump)
{
    return 12'050 + 3'125 * qint64(pump);
}

void morning(Operator& person)
{
    person.say(QStringLiteral("start: a wrong password, then the right one"));
    person.window(QStringLiteral("frmsenha"));
    person.type(QStringLiteral("4321"));
    person.key(QStringLiteral("Return"));
    person.message(QStringLiteral("Esta senha de supervisor não é valida"), QStringLiteral("OK"));
    person.password(QStringLiteral("senha"));
    person.window(Principal);
    person.windowGone(QStringLiteral("frmAguardeP"));
    person.expectRows(Principal, QStringLiteral("flex"), 10);
    person.date(Principal, QStringLiteral("DTP"), QDate::currentDate());
    person.picture(QStringLiteral("principal"));
}

void readings(Operator& person)
{
    person.say(QStringLiteral("ten readings, the first by mouse, the others by keyboard alone"));
    const QString flex = QStringLiteral("flex");
    person.clickRow(Principal, flex, 1);
    qint64 total = 0;
    for (int pump = 1; pump <= 10; ++pump) {
        if (pump > 1)
            person.key(QStringLiteral("Return"));
        const QString number = person.cell(Principal, flex, pump, 0);
        person.expectText(Principal, QStringLiteral("lb_4"), number);
        if (pump == 1)
            person.click(Principal, QStringLiteral("Text1"));
        const qint64 previous = hundredths(person.text(Principal, QStringLiteral("lb_0")));
        person.type(typed(previous + litresOf(pump)));
        person.expect(QStringLiteral("the litres of pump ") + number, [&] {
            const QString litres = person.text(Principal, QStringLiteral("lb_1"));
            return hundredths(litres.contains(u',') ? litres.leftJustified(litres.indexOf(u',') + 3, u'0')
                                                    : litres + QStringLiteral(",00")) == litresOf(pump);
        });
        if (pump == 3)
            person.picture(QStringLiteral("leitura"));
        person.key(QStringLiteral("Return"));
        person.expectRows(Principal, QStringLiteral("flexG"), pump);
        total += hundredths(person.cell(Principal, QStringLiteral("flexG"), pump, 6));
        person.expectText(Principal, QStringLiteral("Label5"), shown(total));
    }
    person.say(QStringLiteral("the program says that every pump has been read"));
    person.key(QStringLiteral("Return"));
    person.message(QStringLiteral("Note que você chegou ao fim da leitura, obseve"), QStringLiteral("OK"));
}

void closing(Operator& person)
{
    person.say(QStringLiteral("F4 and Sim close the sheet"));
    const QString reading = person.cell(Principal, QStringLiteral("flexG"), 10, 3);
    person.key(QStringLiteral("F4"));
    person.message(QStringLiteral("Confirma o fechamento/Leitura da lista?"), QStringLiteral("Sim"),
                   QStringLiteral("fechamento"));
    person.expectRows(Principal, QStringLiteral("flexG"), 0);
    person.expectRows(Principal, QStringLiteral("flex2"), 10);
    qint64 litres = 0;
    for (int pump = 1; pump <= 10; ++pump)
        litres += litresOf(pump);
    person.expectText(Principal, QStringLiteral("Label10"), shown(litres));
    person.picture(QStringLiteral("fechada"));

    person.say(QStringLiteral("the pump list is read again: the pumps have moved on"));
    person.rightClick(Principal, QStringLiteral("flex"));
    person.menu(Principal, QStringLiteral("fer"), QStringLiteral("recarga"));
    person.expect(QStringLiteral("pump 10 at ") + reading, [&] {
        return hundredths(person.cell(Principal, QStringLiteral("flex"), 10, 2)) == hundredths(reading);
    });
}

void papers(Operator& person)
{
    person.say(QStringLiteral("the sheet and the check-list are printed"));
    person.click(Principal, QStringLiteral("Buttom_Mega3"));
    person.print(QStringLiteral("planilha.pdf"), QStringLiteral("impressora"));
    person.click(Principal, QStringLiteral("Buttom_Mega5"));
    person.print(QStringLiteral("conferencia.pdf"));
}

void history(Operator& person)
{
    person.say(QStringLiteral("a month's history, one by one and consolidated"));
    const QDate today = QDate::currentDate();
    person.date(Principal, QStringLiteral("dtpI_0"), today.addDays(-30));
    person.expectRows(Principal, QStringLiteral("flex2"), 310);
    person.click(Principal, QStringLiteral("opt_1"));
    person.expectRows(Principal, QStringLiteral("flex2"), 10);
    person.picture(QStringLiteral("consolidado"));
    person.click(Principal, QStringLiteral("opt_0"));
    person.expectRows(Principal, QStringLiteral("flex2"), 310);
    person.date(Principal, QStringLiteral("dtpI_0"), today);
    person.expectRows(Principal, QStringLiteral("flex2"), 10);
}

void deletion(Operator& person)
{
    person.say(QStringLiteral("a reading is deleted and stands in the log"));
    const QString litres = person.cell(Principal, QStringLiteral("flex2"), 2, 5);
    person.clickRow(Principal, QStringLiteral("flex2"), 2);
    person.key(QStringLiteral("Delete"));
    person.password();
    person.message(QStringLiteral("Deseja mesmo excluir os itens selecionados?"), QStringLiteral("Sim"),
                   QStringLiteral("exclusao"));
    person.expectRows(Principal, QStringLiteral("flex2"), 9);
    person.click(Principal, QStringLiteral("Buttom_Mega6"));
    person.expect(QStringLiteral("the reading in the log"), [&] {
        return person.listHas(Principal, QStringLiteral("List1"),
                              {QDate::currentDate().toString(QStringLiteral("dd/MM/yy")), litres});
    });
    person.picture(QStringLiteral("excluidos"));
    person.key(QStringLiteral("Escape"));
    person.expect(QStringLiteral("the log is hidden"),
                  [&] { return !person.shown(Principal, QStringLiteral("Frame4")); });
}

void issue(Operator& person)
{
    person.say(QStringLiteral("two of a miscellaneous item are issued"));
    const QString grid = QStringLiteral("FlexD");
    const QString item = person.cell(Principal, grid, 1, 1);
    const qint64 balance = hundredths(person.cell(Principal, grid, 1, 2));
    const int items = person.rows(Principal, grid);
    person.clickRow(Principal, grid, 1);
    person.key(QStringLiteral("Return"));
    person.type(QStringLiteral("2"));
    person.key(QStringLiteral("Return"));
    person.expectRows(Principal, grid, items - 1);
    person.click(Principal, QStringLiteral("Buttom_Mega2"));
    person.expectRows(Principal, grid, items);
    person.expect(item + QStringLiteral(" has two less"),
                  [&] { return hundredths(person.cell(Principal, grid, 1, 2)) == balance - 200; });
}

void products(Operator& person)
{
    person.say(QStringLiteral("a fuel's price changes"));
    const QString window = QStringLiteral("frmCadProd");
    person.menu(Principal, QStringLiteral("cad"), QStringLiteral("CadProd"));
    person.password();
    person.window(window);
    person.clickRow(window, QStringLiteral("List1"), 0);
    person.expect(QStringLiteral("the fuel is shown"),
                  [&] { return !person.text(window, QStringLiteral("Label1")).isEmpty(); });
    person.fill(window, QStringLiteral("Text2"), QStringLiteral("4,390"));
    person.picture(QStringLiteral("produtos"));
    person.click(window, QStringLiteral("Buttom_Mega1"));
    person.message(QStringLiteral("Aplicar as alterações para "), QStringLiteral("Sim"));
    person.key(QStringLiteral("Escape"));
    person.windowGone(window);
    person.window(Principal);
    person.expect(QStringLiteral("a pump at 4,39"), [&] {
        for (int row = 1; row <= 10; ++row) {
            if (person.cell(Principal, QStringLiteral("flex"), row, 4) == QStringLiteral("4,39"))
                return true;
        }
        return false;
    });
}

void pumps(Operator& person)
{
    person.say(QStringLiteral("a pump gets another description"));
    const QString window = QStringLiteral("frmCadBomba");
    person.menu(Principal, QStringLiteral("cad"), QStringLiteral("bcad"));
    person.password();
    person.window(window);
    person.clickRow(window, QStringLiteral("List1"), 9);
    person.expectText(window, QStringLiteral("tx_2"), QStringLiteral("10"));
    person.fill(window, QStringLiteral("tx_0"), QStringLiteral("Bomba 10 - Diesel da ilha 5"));
    person.picture(QStringLiteral("bombas"));
    person.click(window, QStringLiteral("Buttom_Mega1"));
    person.message(QStringLiteral("deseja editar este existente?"), QStringLiteral("Sim"));
    person.message(QStringLiteral("Editar as leituras anteriores"), QStringLiteral("Não"));
    person.key(QStringLiteral("Escape"));
    person.windowGone(window);
    person.window(Principal);
    person.expect(QStringLiteral("the new description in the sheet"), [&] {
        return person.cell(Principal, QStringLiteral("flex"), 10, 1) == QStringLiteral("BOMBA 10 - DIESEL DA ILHA 5");
    });
}

void items(Operator& person)
{
    person.say(QStringLiteral("an item joins the miscellaneous ones"));
    const QString window = QStringLiteral("frmdiversos");
    person.menu(Principal, QStringLiteral("cad"), QStringLiteral("cddiversos"));
    person.password();
    person.window(window);
    const int before = person.rows(window, QStringLiteral("Flex1"));
    const int all = person.rows(window, QStringLiteral("flex"));
    person.fill(window, QStringLiteral("Text1"), QStringLiteral("filtro"));
    person.key(QStringLiteral("Return"));
    person.expect(QStringLiteral("only what was searched"), [&] {
        const int found = person.rows(window, QStringLiteral("flex"));
        return found > 0 && found < all;
    });
    person.clickRow(window, QStringLiteral("flex"), 1, true);
    person.expect(QStringLiteral("the quantity is asked"),
                  [&] { return person.shown(window, QStringLiteral("Frame1")); });
    person.type(QStringLiteral("12"));
    person.picture(QStringLiteral("diversos"));
    person.key(QStringLiteral("Return"));
    person.expectRows(window, QStringLiteral("Flex1"), before + 1);
    person.key(QStringLiteral("Escape"));
    person.windowGone(window);
}

void ledger(Operator& person)
{
    person.say(QStringLiteral("a delivery of fuel goes into the ledger"));
    const QString window = QStringLiteral("frmControlEstoqueParal");
    const QString grid = QStringLiteral("flex");
    person.menu(Principal, QStringLiteral("cad"), QStringLiteral("ControlEstoque"));
    person.password();
    person.window(window);
    person.clickRow(window, QStringLiteral("List1"), 1);
    person.click(window, QStringLiteral("opt_0"));
    person.fill(window, QStringLiteral("tx_0"), QStringLiteral("5000"));
    person.fill(window, QStringLiteral("tx_1"), QStringLiteral("NF 4711"));
    person.choose(window, QStringLiteral("Combo1"), QStringLiteral("DISTRIBUIDORA SERRA AZUL DE COMBUSTÍVEIS LTDA"));
    const int before = person.rows(window, grid);
    const qint64 total = hundredths(person.text(window, QStringLiteral("lbt_0")));
    person.click(window, QStringLiteral("BTM"));
    person.expectRows(window, grid, before + 1);
    person.expectText(window, QStringLiteral("lbt_0"), shown(total + 500'000));
    person.picture(QStringLiteral("controle"));
    person.click(window, QStringLiteral("btI"));
    person.print(QStringLiteral("controle.pdf"));
    person.window(window);
    person.key(QStringLiteral("Escape"));
    person.windowGone(window);
}

void gauging(Operator& person)
{
    person.say(QStringLiteral("a tank is dipped"));
    const QString window = QStringLiteral("frmReguaL");
    const QString editor = QStringLiteral("frmEditTabTanque");
    person.window(Principal);
    person.rightClick(Principal, QStringLiteral("flex"));
    person.menu(Principal, QStringLiteral("fer"), QStringLiteral("leitF"));
    person.window(window);
    const int before = person.rows(window, QStringLiteral("flex"));
    person.choose(window, QStringLiteral("Combo1"), QStringLiteral("TANQUE_2"));
    person.clickRow(window, QStringLiteral("List1"), 40);
    person.key(QStringLiteral("Return"));
    person.key(QStringLiteral("space"));
    person.expectRows(window, QStringLiteral("flex"), before + 1);
    person.picture(QStringLiteral("regua"));

    person.say(QStringLiteral("a line of a gauge table is corrected"));
    person.menu(window, QStringLiteral("menu"), QStringLiteral("editTab"));
    person.window(editor);
    person.clickRow(editor, QStringLiteral("flex"), 5);
    person.expect(QStringLiteral("the line is shown"),
                  [&] { return !person.text(editor, QStringLiteral("Text2")).isEmpty(); });
    person.fill(editor, QStringLiteral("Text2"), QStringLiteral("777"));
    person.picture(QStringLiteral("tabela"));
    person.click(editor, QStringLiteral("Command1"));
    person.expect(QStringLiteral("777 litres in the table"),
                  [&] { return person.cell(editor, QStringLiteral("flex"), 5, 2).trimmed() == QStringLiteral("777"); });
    person.key(QStringLiteral("Escape"));
    person.windowGone(editor);
    person.window(window);
    person.key(QStringLiteral("Escape"));
    person.windowGone(window);
    person.window(Principal);
}

} // namespace

void day(Operator& person)
{
    morning(person);
    readings(person);
    closing(person);
    papers(person);
    history(person);
    deletion(person);
    issue(person);
    products(person);
    pumps(person);
    items(person);
    ledger(person);
    gauging(person);
}

} // namespace tour
