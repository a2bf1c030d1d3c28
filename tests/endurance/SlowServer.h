#pragma once

#include <QString>

#include <atomic>
#include <list>
#include <thread>

namespace endurance {

/// A server that takes its time: stands before a MariaDB server, on a loopback address of its own, and hands each
/// statement on after a while.
class SlowServer
{
public:
    /// Raises std::runtime_error where the address (port 3306) is taken.
    SlowServer(const QString& server, const QString& address, int milliseconds);
    ~SlowServer();
    SlowServer(const SlowServer&) = delete;
    SlowServer& operator=(const SlowServer&) = delete;

private:
    void serve();
    void pass(int from, int to, bool statements);

    QString m_server;
    int m_milliseconds;
    int m_listener;
    std::atomic<bool> m_ends = false;
    std::list<std::thread> m_threads;
    std::list<int> m_sockets;
};

} // namespace endurance
