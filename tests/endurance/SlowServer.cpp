#include "SlowServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <stdexcept>

namespace endurance {

namespace {

constexpr int statementCommand = 3; ///< The byte behind a packet's length and number.
constexpr ssize_t commandAt = 4;

sockaddr_in at(const QString& address)
{
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(3306);
    place.sin_addr.s_addr = inet_addr(qPrintable(address));
    return place;
}

const sockaddr* plain(const sockaddr_in& place)
{
    return reinterpret_cast<const sockaddr*>(&place);
}

} // namespace

SlowServer::SlowServer(const QString& server, const QString& address, int milliseconds)
    : m_server(server)
    , m_milliseconds(milliseconds)
    , m_listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const int on = 1;
    ::setsockopt(m_listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in place = at(address);
    if (::bind(m_listener, plain(place), sizeof place) != 0 || ::listen(m_listener, 8) != 0)
        throw std::runtime_error("nothing can listen on " + address.toStdString());
    m_threads.emplace_back([this] { serve(); });
}

SlowServer::~SlowServer()
{
    m_ends = true;
    ::shutdown(m_listener, SHUT_RDWR);
    m_threads.front().join(); // No thread or socket comes after this.
    m_threads.pop_front();
    for (const int socket : m_sockets)
        ::shutdown(socket, SHUT_RDWR);
    for (std::thread& thread : m_threads)
        thread.join();
    for (const int socket : m_sockets)
        ::close(socket);
    ::close(m_listener);
}

void SlowServer::serve()
{
    while (!m_ends) {
        const int client = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0)
            continue;
        const int server = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const sockaddr_in place = at(m_server);
        const int on = 1;
        for (const int socket : {client, server})
            ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        if (::connect(server, plain(place), sizeof place) != 0) {
            ::close(client);
            ::close(server);
            continue;
        }
        m_sockets.insert(m_sockets.end(), {client, server});
        m_threads.emplace_back([this, client, server] { pass(client, server, true); });
        m_threads.emplace_back([this, client, server] { pass(server, client, false); });
    }
}

/// Until one side ends. A statement begins a packet that is read at once: the client waits for the answer to each.
void SlowServer::pass(int from, int to, bool statements)
{
    std::array<char, 65536> bytes{};
    ssize_t count = 0;
    while ((count = ::read(from, bytes.data(), bytes.size())) > 0) {
        if (statements && count > commandAt && bytes[commandAt] == statementCommand)
            std::this_thread::sleep_for(std::chrono::milliseconds(m_milliseconds));
        if (::send(to, bytes.data(), static_cast<size_t>(count), MSG_NOSIGNAL) != count)
            break;
    }
    ::shutdown(to, SHUT_RDWR);
}

} // namespace endurance
