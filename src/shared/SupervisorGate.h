#pragma once

#include <functional>

/// The denial flag and the prompt that clears it: the only result of asking for the supervisor password.
class SupervisorGate
{
public:
    /// `showPrompt` shows the password window modally; that window sets the flag when it opens and clears it when the
    /// password is accepted.
    explicit SupervisorGate(std::function<void()> showPrompt = {});

    void setPrompt(std::function<void()> showPrompt);

    /// True means not authorised. Keeps its last value between prompts.
    bool denied = true;

    /// Sets the flag to true, asks, and returns the flag: true = not authorised.
    [[nodiscard]] bool RequireSupervisor();

private:
    std::function<void()> m_showPrompt;
};
