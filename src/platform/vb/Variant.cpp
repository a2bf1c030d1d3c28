#include "platform/vb/Variant.h"

#include "platform/vb/Conversion.h"

namespace vb {

QString Variant::textOrEmpty() const
{
    return isNull() ? QString() : CStr(*this);
}

QString Variant::text() const
{
    return CStr(*this);
}

} // namespace vb
