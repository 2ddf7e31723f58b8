#include "platform/linux/capture/process_events.h"

#include <arpa/inet.h>
#include <linux/cn_proc.h>
#include <linux/connector.h>
#include <linux/filter.h>
#include <linux/netlink.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>
#include <utility>

namespace skavlo {

namespace {

constexpr std::size_t kPayloadAt = NLMSG_HDRLEN + sizeof(cn_msg);
constexpr std::size_t kLargestMessage = 512;

// The kind of the event and the process, of every message.
struct Message {
    std::uint32_t what;
    std::uint32_t cpu;
    std::uint64_t time;
    std::uint32_t first;   // the process; of an answer to a request: its error
    std::uint32_t second;  // its thread group
};

bool receive(int socket, Message& message) {
    std::array<char, kLargestMessage> buffer{};
    sockaddr_nl from{};
    socklen_t fromLength = sizeof from;
    ssize_t length = 0;
    do {
        length = recvfrom(socket, buffer.data(), buffer.size(), MSG_DONTWAIT,
                          reinterpret_cast<sockaddr*>(&from), &fromLength);
    } while (length < 0 && errno == EINTR);
    if (length < 0) return false;
    message = {};
    // Any process may write to a netlink socket; only the kernel has the number 0.
    if (from.nl_pid != 0 || static_cast<std::size_t>(length) < kPayloadAt + sizeof message)
        message.what = ~0U;
    else
        std::memcpy(&message, buffer.data() + kPayloadAt, sizeof message);
    return true;
}

bool requestEvents(int socket) {
    constexpr std::uint32_t kListen = PROC_CN_MCAST_LISTEN;
    constexpr std::size_t kLength = kPayloadAt + sizeof kListen;
    nlmsghdr header{};
    header.nlmsg_len = kLength;
    header.nlmsg_type = NLMSG_DONE;
    cn_msg message{};
    message.id = {CN_IDX_PROC, CN_VAL_PROC};
    message.len = sizeof kListen;
    std::array<char, kLength> request{};
    std::memcpy(request.data(), &header, sizeof header);
    std::memcpy(request.data() + NLMSG_HDRLEN, &message, sizeof message);
    std::memcpy(request.data() + kPayloadAt, &kListen, sizeof kListen);
    return send(socket, request.data(), request.size(), 0) == static_cast<ssize_t>(kLength);
}

// Only what is of interest wakes the process: a busy machine forks a thousand times a second.
bool filterEvents(int socket) {
    std::array<sock_filter, 4> program{
        {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, kPayloadAt),
         BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, htonl(proc_event::PROC_EVENT_EXEC), 0, 1),
         BPF_STMT(BPF_RET | BPF_K, kLargestMessage), BPF_STMT(BPF_RET | BPF_K, 0)}};
    const sock_fprog filter{program.size(), program.data()};
    return setsockopt(socket, SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof filter) == 0;
}

// The answer to the request is there at once, unless the request was not even looked at.
Result<bool> expectAnswer(int socket) {
    Message message{};
    while (receive(socket, message)) {
        if (message.what != proc_event::PROC_EVENT_NONE) continue;
        if (message.first == 0) return true;
        return Error{std::strerror(static_cast<int>(message.first))};
    }
    return Error{"the kernel does not answer, as in a container"};
}

}  // namespace

Result<ProcessEvents> ProcessEvents::open() {
    UniqueDescriptor socket(
        ::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_CONNECTOR));
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = CN_IDX_PROC;
    if (!socket ||
        bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        !requestEvents(socket.get())) {
        return Error{std::strerror(errno)};
    }
    if (auto answered = expectAnswer(socket.get()); !answered) return answered.error();
    if (!filterEvents(socket.get())) return Error{std::strerror(errno)};
    return ProcessEvents(std::move(socket));
}

ProcessEvents::Started ProcessEvents::read() {
    Started started;
    Message message{};
    while (true) {
        errno = 0;
        if (receive(socket_.get(), message)) {
            if (message.what == proc_event::PROC_EVENT_EXEC)
                started.processes.push_back(static_cast<pid_t>(message.second));
        } else if (errno == ENOBUFS) {
            started.missed = true;
        } else {
            return started;
        }
    }
}

}  // namespace skavlo
