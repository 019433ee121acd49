// Measures a request that carries a big image: what building it takes beyond one pass of Base64, and how much
// memory it needs on its way, by the kernel's account of a process that sends it.
//
// varnel-bench-providers BIN_FOLDER
// varnel-bench-providers --send BYTES      one request to VARNEL_CLAUDE_BASE with an image of that size

#include "Measure.h"

#include "base/HttpClient.h"
#include "providers/chat/ProviderClient.h"
#include "providers/chat/RequestBuilder.h"

#include <QCoreApplication>

using namespace varnel;
using namespace varnel::bench;

namespace {

constexpr qsizetype imageSize = 10 * 1000 * 1000;

ProviderTurn turnWithImage(qsizetype size)
{
    ProviderTurn turn;
    turn.provider = RemoteProvider::Claude;
    turn.model = QStringLiteral("claude-sonnet-5");
    turn.key = QStringLiteral("no key");
    QByteArray image(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i)
        image[i] = static_cast<char>(i * 7919 >> 3);
    turn.messages = {{.role = ChatRole::User,
                      .text = QStringLiteral("What is this?"),
                      .media = {{.mime = QStringLiteral("image/png"), .data = image}}}};
    return turn;
}

Task<void> sendAndQuit(ProviderClient client, ProviderTurn turn)
{
    int status = 0;
    try {
        co_await client.ask(std::move(turn), {});
    } catch (const TransportError& error) {
        std::fprintf(stderr, "%s\n", error.what());
        status = 1;
    } catch (const Error&) {
        // The practice host is no provider; it read the request and said so.
    }
    QCoreApplication::exit(status);
}

int send(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    HttpClient http;
    const ProviderTurn turn = turnWithImage(std::atoll(argv[2]));
    const Task<void> task = sendAndQuit(ProviderClient(ApiBases(processEnvironment), http), turn);
    return QCoreApplication::exec();
}

template <typename Work>
double typical(Work work)
{
    std::vector<double> times;
    for (int round = 0; round < 21; ++round) {
        const double started = now();
        work();
        times.push_back(now() - started);
    }
    return median(times);
}

void measureBuilding()
{
    const ProviderTurn turn = turnWithImage(imageSize);
    const QByteArray& image = turn.messages.front().media.front().data;
    const ApiBases bases(processEnvironment);
    const double pass = typical([&image] { return image.toBase64(); });
    const double build = typical([&turn, &bases] { return buildProviderRequest(turn, bases); });
    report("request with a 10 MB image, building", build, "ms", "");
    report("request with a 10 MB image, against one pass of Base64", build / pass, "x", "<= 2");
}

void measureMemory(const std::string& program, const std::string& binFolder)
{
    const PracticeHost host(binFolder);
    setenv("VARNEL_CLAUDE_BASE", host.url().c_str(), 1);
    const auto runs =
        runInTurn({{program, "--send", "0"}, {program, "--send", std::to_string(imageSize)}}, 5);
    const double mebibytes = median(runs[1], &Run::peak) - median(runs[0], &Run::peak);
    report("request with a 10 MB image, peak memory", mebibytes, "MiB", "");
    report("request with a 10 MB image, peak memory against the image", mebibytes * 1024 * 1024 / imageSize,
           "x", "<= 4");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::string(argv[1]) == "--send")
        return send(argc, argv);
    if (argc != 2)
        return 2;
    // First: a child's peak counts that of the program which started it.
    measureMemory(argv[0], argv[1]);
    measureBuilding();
    return 0;
}
