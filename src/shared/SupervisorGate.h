#pragma once

#include <functional>

enum class SupervisorAnswer { Granted, Refused };

/// Asks for the supervisor password before a guarded operation.
class SupervisorGate
{
public:
    /// `prompt` shows the password window until it has been answered; one that is closed refuses. It may raise what the
    /// database raises.
    explicit SupervisorGate(std::function<SupervisorAnswer()> prompt);

    /// Asks. True = not authorised.
    [[nodiscard]] bool RequireSupervisor() const;

private:
    std::function<SupervisorAnswer()> m_prompt;
};
