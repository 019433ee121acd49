// The yardstick for `varnel ctl chat`: asks the same question over a bare socket and only splits what comes
// into lines, writes each to standard output and flushes. No JSON, no HTTP framing.
//
// split-lines PORT MODEL

#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    const int connection = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(std::atoi(argv[1])));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        return 1;
    const std::string body = std::string(R"({"model":")") + argv[2] +
                             R"(","messages":[{"role":"user","content":"go"}],"stream":true})";
    const std::string request = "POST /api/chat HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n"
                                "Content-Type: application/json\r\nContent-Length: " +
                                std::to_string(body.size()) + "\r\n\r\n" + body;
    if (write(connection, request.data(), request.size()) != static_cast<ssize_t>(request.size()))
        return 1;

    static char buffer[16384];
    std::size_t held = 0;
    while (true) {
        const ssize_t count = read(connection, buffer + held, sizeof buffer - held);
        if (count <= 0)
            break;
        held += static_cast<std::size_t>(count);
        char* begin = buffer;
        char* const end = buffer + held;
        while (char* const lineEnd =
                   static_cast<char*>(std::memchr(begin, '\n', static_cast<std::size_t>(end - begin)))) {
            std::fwrite(begin, 1, static_cast<std::size_t>(lineEnd + 1 - begin), stdout);
            std::fflush(stdout);
            begin = lineEnd + 1;
        }
        held = static_cast<std::size_t>(end - begin);
        if (held == sizeof buffer)
            return 1;
        std::memmove(buffer, begin, held);
    }
    return 0;
}
