#include "bench/BarePeer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

sockaddr_in Loopback(unsigned short port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

} // namespace

namespace Bench
{

Listener::Listener() : Descriptor(socket(AF_INET, SOCK_STREAM, 0)), BoundPort(0)
{
    sockaddr_in address = Loopback(0);
    bind(Descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address);
    listen(Descriptor, 1024);
    socklen_t size = sizeof address;
    getsockname(Descriptor, reinterpret_cast<sockaddr*>(&address), &size);
    BoundPort = ntohs(address.sin_port);
}

Listener::~Listener()
{
    close(Descriptor);
}

int Listener::Accept() const
{
    return accept(Descriptor, nullptr, nullptr);
}

int Listener::Connect() const
{
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    const sockaddr_in address = Loopback(BoundPort);
    connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    // As the library's own sockets.
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return descriptor;
}

bool SendAll(int descriptor, const void* data, std::size_t size)
{
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t sent = send(descriptor, next, size, MSG_NOSIGNAL);
        if (sent <= 0)
            return false;
        next += sent;
        size -= static_cast<std::size_t>(sent);
    }
    return true;
}

bool RecvAll(int descriptor, void* data, std::size_t size)
{
    char* next = static_cast<char*>(data);
    while (size > 0) {
        const ssize_t received = recv(descriptor, next, size, 0);
        if (received <= 0)
            return false;
        next += received;
        size -= static_cast<std::size_t>(received);
    }
    return true;
}

std::size_t RecvSome(int descriptor, void* data, std::size_t size)
{
    const ssize_t received = recv(descriptor, data, size, 0);
    return received > 0 ? static_cast<std::size_t>(received) : 0;
}

void Drain(int descriptor)
{
    std::vector<char> sink(65536);
    while (recv(descriptor, sink.data(), sink.size(), 0) > 0) {
    }
}

void CloseDescriptor(int descriptor)
{
    shutdown(descriptor, SHUT_RDWR);
    close(descriptor);
}

void AllowManyDescriptors()
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

void AnswerRequests(int descriptor, std::size_t requestSize, std::vector<unsigned char> reply,
                    void (*make)(const unsigned char* request, unsigned char* reply))
{
    std::vector<unsigned char> request(requestSize);
    while (RecvAll(descriptor, request.data(), request.size())) {
        make(request.data(), reply.data());
        if (!SendAll(descriptor, reply.data(), reply.size()))
            return;
    }
}

} // namespace Bench
