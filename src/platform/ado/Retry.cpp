#include "platform/ado/Retry.h"

#include "platform/ado/Error.h"
#include "platform/ado/IgnoredErrors.h"

namespace ado {

void againOnConflict(const std::function<void()>& change)
{
    constexpr int MostRepeats = 3;
    for (int repeats = 0;; ++repeats) {
        try {
            change();
            return;
        } catch (const Error& error) {
            if (error.number() != Error::Conflict || repeats == MostRepeats)
                throw;
            platform::noteIgnored(error);
        }
    }
}

} // namespace ado
