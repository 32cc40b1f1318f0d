#pragma once

#include <cstddef>
#include <thread>
#include <vector>

// The other end of the connections that are measured, on plain system calls: it includes nothing of the
// library.

namespace Bench
{

/// A listening socket on a free loopback port.
class Listener
{
public:
    Listener();
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    unsigned short Port() const { return BoundPort; }
    /// The descriptor of the next connection.
    int Accept() const;
    /// A plain connection to this listener.
    int Connect() const;

private:
    int Descriptor;
    unsigned short BoundPort;
};

bool SendAll(int descriptor, const void* data, std::size_t size);
bool RecvAll(int descriptor, void* data, std::size_t size);
/// What is there, at least a byte; 0 at the end.
std::size_t RecvSome(int descriptor, void* data, std::size_t size);
/// Reads and forgets until the peer closes.
void Drain(int descriptor);
void CloseDescriptor(int descriptor);
/// As many descriptors as the system lets this process have.
void AllowManyDescriptors();
/// Answers every request of so many bytes with the reply that make(request, reply) fills, until the peer
/// closes.
void AnswerRequests(int descriptor, std::size_t requestSize, std::vector<unsigned char> reply,
                    void (*make)(const unsigned char* request, unsigned char* reply));

} // namespace Bench
