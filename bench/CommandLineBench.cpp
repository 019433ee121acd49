// Measures `varnel ctl` against other programs that do the same, all in one run.
//
// varnel-bench-ctl BIN_FOLDER PEERS_FOLDER NODE_MODULES_FOLDER
//
// BIN_FOLDER holds varnel and its practice host. Figures against a peer that is not installed are
// skipped, and say so.

#include "Measure.h"

#include <cstring>

using namespace varnel::bench;

namespace {

constexpr int floodLines = 100'000;

bool exists(const std::string& path)
{
    return access(path.c_str(), R_OK) == 0;
}

bool works(const char* program)
{
    return std::system((std::string("command -v ") + program + " >/dev/null 2>&1").c_str()) == 0;
}

void measureTags(const std::string& bin, const std::string& peers, const PracticeHost& host)
{
    const std::string url = host.url() + "/api/tags";
    std::vector<std::vector<std::string>> commands = {{bin + "/varnel", "ctl", "tags"}};
    const bool withCurl = works("curl");
    const bool withNode = works("node");
    if (withCurl)
        commands.push_back({"curl", "-s", url});
    if (withNode)
        commands.push_back({"node", peers + "/http-tags.js", url});
    const auto runs = runInTurn(commands, 21);
    const double wall = median(runs[0], &Run::wall);
    report("ctl tags, wall", wall, "ms", "");
    std::size_t peer = 1;
    const auto against = [&](bool installed, const std::string& name, const char* target) {
        if (installed)
            report(name, wall / median(runs[peer++], &Run::wall), "x", target);
        else
            reportSkipped(name, "x", target);
    };
    against(withCurl, "ctl tags, wall, against curl", "<= 2");
    against(withNode, "ctl tags, wall, against Node http", "<= 0.2");
    report("ctl tags, peak memory", median(runs[0], &Run::peak), "MiB", "<= 24");
}

void measureFlood(const std::string& bin, const std::string& peers, const std::string& modules,
                  const PracticeHost& host)
{
    const std::string model = "practice-flood:" + std::to_string(floodLines);
    std::vector<std::vector<std::string>> commands = {
        {bin + "/varnel", "ctl", "chat", model, "go"},
        {bin + "/varnel-bench-split-lines", host.port(), model},
    };
    const bool withNode = works("node") && exists(modules + "/ollama/package.json");
    if (withNode)
        commands.push_back({"node", peers + "/ollama-chat.mjs", modules, host.url(), model});
    const auto runs = runInTurn(commands, 7);
    const double cpu = median(runs[0], &Run::cpu);
    report("100,000 deltas, CPU", cpu, "ms", "");
    report("100,000 deltas, CPU, against split, write, flush", cpu / median(runs[1], &Run::cpu), "x", "<= 3");
    const char* const againstClient = "100,000 deltas, CPU, against the ollama npm client";
    if (withNode)
        report(againstClient, cpu / median(runs[2], &Run::cpu), "x", "<= 0.5");
    else
        reportSkipped(againstClient, "x", "<= 0.5");

    const Run tenfold = runToSuccess(
        {bin + "/varnel", "ctl", "chat", "practice-flood:" + std::to_string(10 * floodLines), "go"});
    report("1,000,000 deltas, memory above 100,000", tenfold.peak - median(runs[0], &Run::peak), "MiB",
           "<= 2");
}

/// How long after it was sent each piece of a paced reply comes out of `command`, in milliseconds: the
/// median. A piece is the time it was sent at, in microseconds of the monotonic clock, and a line feed; the
/// bare socket's lines hold it as the content of their JSON.
double medianLatency(const std::vector<std::string>& command)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        std::exit(1);
    const double started = now();
    const pid_t child = start(command, ends[1]);
    close(ends[1]);
    constexpr const char* contentKey = "\"content\":\"";
    std::vector<double> latencies;
    std::string held;
    char buffer[65536];
    ssize_t count = 0;
    while ((count = read(ends[0], buffer, sizeof buffer)) > 0) {
        const double arrived = now();
        held.append(buffer, static_cast<std::size_t>(count));
        std::size_t lineEnd = 0;
        while ((lineEnd = held.find('\n')) != std::string::npos) {
            const std::size_t content = held.find(contentKey);
            const std::size_t begin = content < lineEnd ? content + std::strlen(contentKey) : 0;
            const double latency = arrived - std::strtod(held.c_str() + begin, nullptr) / 1e3;
            if (latency > 0 && latency < 1000)
                latencies.push_back(latency);
            held.erase(0, lineEnd + 1);
        }
    }
    close(ends[0]);
    finish(child, started);
    if (latencies.size() < 1000) {
        std::fprintf(stderr, "%s: only %zu paced pieces were recognised\n", command[0].c_str(),
                     latencies.size());
        std::exit(1);
    }
    return median(latencies);
}

void measureLatency(const std::string& bin, const PracticeHost& host)
{
    const std::string model = "practice-paced:1000";
    const double bare = medianLatency({bin + "/varnel-bench-split-lines", host.port(), model});
    const double ours = medianLatency({bin + "/varnel", "ctl", "chat", model, "go"});
    report("1,000 lines a second, median latency, bare socket", bare, "ms", "");
    report("1,000 lines a second, median latency", ours, "ms", "");
    report("1,000 lines a second, added median latency", ours - bare, "ms", "<= 0.2");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: varnel-bench-ctl BIN_FOLDER PEERS_FOLDER NODE_MODULES_FOLDER\n");
        return 2;
    }
    const std::string bin = argv[1];
    const PracticeHost host(bin);
    setenv("VARNEL_OLLAMA_URL", host.url().c_str(), 1);
    measureTags(bin, argv[2], host);
    measureFlood(bin, argv[2], argv[3], host);
    measureLatency(bin, host);
    return 0;
}
