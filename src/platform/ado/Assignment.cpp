#include "platform/ado/Assignment.h"

#include "platform/vb/Conversion.h"
#include "platform/vb/Error.h"

#include <cmath>

namespace ado {

namespace {

qint64 wholeNumber(const vb::Variant& value)
{
    if (const auto* whole = std::get_if<qint64>(&value.value())) {
        return *whole;
    }
    const double rounded = std::nearbyint(vb::CDbl(value)); // Half to even, as every conversion to a whole number.
    if (!(std::abs(rounded) < 9.2e18)) {
        throw vb::Error(vb::Error::Overflow);
    }
    return static_cast<qint64>(rounded);
}

} // namespace

vb::Variant assigned(const Field& field, const vb::Variant& value)
{
    if (value.isNull()) {
        return value;
    }
    try {
        switch (field.type) {
        case FieldType::Long:
            return wholeNumber(value);
        case FieldType::Double:
            return vb::CDbl(value);
        case FieldType::Currency:
            return vb::CCur(value);
        case FieldType::Date:
            return value.isDate() ? value : vb::Variant(vb::CDate(value));
        case FieldType::Text:
            return value.text();
        }
    } catch (const vb::Error&) {
        throw Error(3421,
                    QStringLiteral("O aplicativo usa um valor do tipo incorreto para a operação atual: %1 = \"%2\"")
                        .arg(field.name, value.textOrEmpty()));
    }
    return value;
}

Error unknownField(QStringView name)
{
    return Error(3265, QStringLiteral("O item não pode ser encontrado na coleção que corresponde ao nome ou ao número "
                                      "ordinal solicitado: %1")
                           .arg(name));
}

} // namespace ado
