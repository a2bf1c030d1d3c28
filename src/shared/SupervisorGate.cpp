#include "shared/SupervisorGate.h"

#include <utility>

SupervisorGate::SupervisorGate(std::function<void()> showPrompt)
    : m_showPrompt(std::move(showPrompt))
{}

void SupervisorGate::setPrompt(std::function<void()> showPrompt)
{
    m_showPrompt = std::move(showPrompt);
}

bool SupervisorGate::RequireSupervisor()
{
    denied = true;
    if (m_showPrompt)
        m_showPrompt();
    return denied;
}
