#include "gauging/GaugeTable.h"

#include "platform/vb/Conversion.h"
#include "platform/vb/Format.h"
#include "shared/Tanks.h"

#include <QHash>

namespace GaugeTable {

namespace {

constexpr int TankCount = 5;
constexpr int CentimetresLength = 3;

} // namespace

QStringList tankNames()
{
    return shared::tankNames(TankCount);
}

int& changesOf(const QString& tank)
{
    static QHash<QString, int> changes;
    return changes[tank];
}

QString litresText(const vb::Variant& litres)
{
    return vb::Format(litres.textOrEmpty().remove(u'.'), u"@@@@@@");
}

QString lineText(const vb::Variant& centimetres, const vb::Variant& litres)
{
    return centimetres.textOrEmpty() + u' ' + litresText(litres);
}

Reading readingOfTexts(const QString& centimetres, const QString& litres)
{
    return {vb::leadingNumber(u'0' + centimetres), vb::leadingNumber(u'0' + litres)};
}

Reading readingOfLine(const QString& line)
{
    return readingOfTexts(line.left(CentimetresLength), line.mid(CentimetresLength));
}

QString noTableText()
{
    return QStringLiteral("Não há controle de medição inserida para este tanque no sistema. \n"
                          "Você poderá ir no Gerenciador VELTA e inserir ou importar uma tabela/régua, em caso de "
                          "duvida solicite suporte");
}

} // namespace GaugeTable
