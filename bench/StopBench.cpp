// Measures how long a stop takes, from the press to the closed connection, at every point of a request: while
// the host is looked up, while connecting, in the TLS handshake, before the answer, and in the middle of a
// fast stream.

#include "base/HttpClient.h"
#include "base/Task.h"
#include "practice_host/HttpServer.h"
#include "support/Await.h"
#include "support/SlowResolver.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <arpa/inet.h>
#include <cstdio>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

constexpr int rounds = 20;

Task<void> readToTheEnd(HttpClient& http, QUrl url, std::stop_token stop)
{
    HttpRequest request;
    request.url = std::move(url);
    HttpResponse response = co_await http.send(std::move(request), stop);
    while (co_await response.next()) {
    }
}

/// Starts a request, waits until it is at the point to be measured, stops it; yields the worst time in
/// milliseconds until the request has ended and the server sees its connection closed; -1 if it never gets
/// there or never ends.
double worstStop(const QUrl& url, const std::function<bool()>& isThere, const std::function<bool()>& isClosed)
{
    double worst = 0;
    for (int round = 0; round < rounds; ++round) {
        HttpClient http;
        std::stop_source stop;
        Task<void> task = readToTheEnd(http, url, stop.get_token());
        if (!waitUntil(isThere))
            return -1;
        waitUntil([] { return false; }, 20ms);
        QElapsedTimer timer;
        timer.start();
        stop.request_stop();
        while (!task.isFinished() || !isClosed()) {
            if (timer.hasExpired(10'000))
                return -1;
            QCoreApplication::processEvents();
        }
        worst = std::max(worst, static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    return worst;
}

/// A socket whose queue of connections is full, so that a further connection is never made.
class FullSocket
{
public:
    FullSocket()
        : m_listener(socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        socklen_t length = sizeof address;
        if (bind(m_listener, generic, length) != 0 || listen(m_listener, 0) != 0)
            return;
        getsockname(m_listener, generic, &length);
        m_port = ntohs(address.sin_port);
        for (int& filler : m_fillers) {
            filler = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
            static_cast<void>(connect(filler, generic, length));
        }
    }
    FullSocket(const FullSocket&) = delete;
    FullSocket& operator=(const FullSocket&) = delete;
    ~FullSocket()
    {
        for (const int filler : m_fillers)
            close(filler);
        close(m_listener);
    }
    int port() const { return m_port; }

private:
    int m_listener;
    int m_port = 0;
    int m_fillers[4]{};
};

void report(const char* point, double milliseconds)
{
    if (milliseconds < 0) {
        std::printf("stop %s, worst of %d\tfailed\tms\t<= 50\n", point, rounds);
        return;
    }
    std::printf("stop %s, worst of %d\t%.3f\tms\t<= 50\n", point, rounds, milliseconds);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const auto always = [] { return true; };

    report("while the host is looked up", worstStop(
                                              QUrl(QStringLiteral("http://slow.test/")),
                                              [] { return SlowResolver::waiting() > 0; }, always));
    SlowResolver::release();

    const FullSocket full;
    report("while connecting",
           worstStop(QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(full.port())), always, always));

    practice::HttpServer server([&](const std::shared_ptr<practice::HttpExchange>& exchange) {
        if (exchange->path() != "/flood")
            return;
        exchange->beginReply(200, {});
        exchange->sendChunk(QByteArray(64 * 1024 * 1024, 'x'));
    });
    server.listen();
    const auto isClosed = [&] { return server.openConnections() == 0; };
    const auto isConnected = [&] { return server.openConnections() > 0; };
    QUrl secure = server.url();
    secure.setScheme(QStringLiteral("https"));
    report("in the TLS handshake", worstStop(secure, isConnected, isClosed));
    report("before the answer", worstStop(server.url(), isConnected, isClosed));
    report("in a fast stream",
           worstStop(server.url().resolved(QUrl(QStringLiteral("/flood"))), isConnected, isClosed));
    SlowResolver::release();
    return 0;
}
