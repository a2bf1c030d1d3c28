#pragma once

namespace ado {
class Connection;
}
namespace data {
class Dialect;
}
namespace platform {
class Clock;
class EventPump;
class Messages;
} // namespace platform

/// What a window is given when it is made. Everything outlives every window.
struct Services
{
    ado::Connection& DataConnection;
    const data::Dialect& dialect;
    platform::Messages& messages;
    platform::Clock& clock;
    platform::EventPump& events;
};
