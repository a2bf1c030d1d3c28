#include "shared/SupervisorGate.h"

#include <utility>

SupervisorGate::SupervisorGate(std::function<SupervisorAnswer()> prompt)
    : m_prompt(std::move(prompt))
{}

bool SupervisorGate::RequireSupervisor() const
{
    return m_prompt() != SupervisorAnswer::Granted;
}
