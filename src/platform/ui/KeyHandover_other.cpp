#include "platform/ui/KeyHandover.h"

namespace platform {

std::unique_ptr<KeyHandover> makeKeyHandover(std::function<QWindow*()>)
{
    return std::make_unique<KeyHandover>();
}

} // namespace platform
