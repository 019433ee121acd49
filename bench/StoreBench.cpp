// Measures the store: reading and writing conversations against Node's JSON and against the least that
// reading takes, the memory of a save, and what one change costs the thread of the window.
//
// varnel-bench-store PEERS_FOLDER              the whole table
// varnel-bench-store ROLE FILE…                one part of it, in a process of its own: its figures on
// standard output

#include "Measure.h"
#include "SampleConversations.h"

#include "store/ConversationKeeper.h"
#include "store/ReplacingFile.h"
#include "store/SessionStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <array>
#include <cmath>
#include <cstring>
#include <sys/resource.h>

using namespace varnel;
using namespace varnel::bench;

namespace {

double processorTime()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto milliseconds = [](const timeval& time) {
        return double(time.tv_sec) * 1e3 + double(time.tv_usec) / 1e3;
    };
    return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

/// MiB of resident memory, now ("VmRSS:") or at most since resetPeak() ("VmHWM:").
double memory(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        std::exit(1);
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(qsizetype(std::strlen(field))).trimmed().split(' ').first().toDouble() / 1024;
    }
    return 0;
}

void resetPeak()
{
    QFile reset(QStringLiteral("/proc/self/clear_refs"));
    if (reset.open(QIODevice::WriteOnly))
        reset.write("5");
}

int makeFile(const QString& folder, double size, int count)
{
    SessionStore(folder).save(conversations(size, count));
    return 0;
}

/// load: wall and processor time of reading.
int load(const QString& folder)
{
    const double cpu = processorTime();
    const double started = now();
    const SessionList sessions = SessionStore(folder).load();
    std::printf("%f %f\n", now() - started, processorTime() - cpu);
    return sessions.empty() ? 1 : 0;
}

/// loadSave: processor time of both, wall time of saving, and its peak memory over what was there before.
int loadSave(const QString& folder)
{
    double cpu = processorTime();
    SessionStore store(folder);
    const SessionList sessions = store.load();
    cpu = processorTime() - cpu;
    const double before = memory("VmRSS:");
    resetPeak();
    const double cpuBefore = processorTime();
    const double started = now();
    store.save(sessions);
    const double wall = now() - started;
    cpu += processorTime() - cpuBefore;
    std::printf("%f %f %f %f\n", cpu, wall, memory("VmHWM:") / before, before);
    return 0;
}

/// limit: the least that reading takes, the bytes and their conversion to UTF-16.
int limit(const QString& folder)
{
    const double started = now();
    QFile file(SessionStore::fileIn(folder));
    if (!file.open(QIODevice::ReadOnly))
        return 1;
    const QString contents = QString::fromUtf8(file.readAll());
    std::printf("%f\n", now() - started);
    return contents.isEmpty() ? 1 : 0;
}

/// rawSave: the same bytes from memory to the disk in the same way.
int rawSave(const QString& folder)
{
    QFile file(SessionStore::fileIn(folder));
    if (!file.open(QIODevice::ReadOnly))
        return 1;
    const QByteArray bytes = file.readAll();
    const double started = now();
    ReplacingFile copy(folder + QStringLiteral("/raw.json"));
    copy.write({bytes.constData(), std::size_t(bytes.size())});
    copy.commit();
    std::printf("%f\n", now() - started);
    return 0;
}

/// fileWork: the processor time of moving the bytes alone, as both reading and saving move them.
int fileWork(const QString& folder)
{
    const double cpu = processorTime();
    const QString source = SessionStore::fileIn(folder);
    const FileDescriptor file = openRegularFile(source);
    ReplacingFile copy(folder + QStringLiteral("/raw.json"));
    std::vector<char> part(std::size_t(256) * 1024);
    while (const std::size_t count = readInto(file.get(), part.data(), part.size(), source))
        copy.write({part.data(), count});
    copy.commit();
    std::printf("%f\n", processorTime() - cpu);
    return 0;
}

/// change: the 99th percentile of what one change costs its thread, and how long the flush at the end takes.
int change(const QString& folder)
{
    const SystemClock clock;
    ConversationKeeper keeper(folder, clock, [](const SaveStatus&) {});
    StoredConversations stored = keeper.load({});
    SessionList& sessions = stored.sessions;
    QRandomGenerator random(1);
    std::vector<double> times;
    for (int i = 0; i < 1000; ++i) {
        const auto index = std::size_t(random.bounded(int(sessions.size())));
        const double started = now();
        sessions.edit(index).messages.back().content += u'x';
        keeper.saveSessions(sessions);
        times.push_back(now() - started);
        QCoreApplication::processEvents();
        usleep(2000);
    }
    std::sort(times.begin(), times.end());
    const double started = now();
    keeper.flush();
    std::printf("%f %f\n", times[std::size_t(double(times.size()) * 0.99)], now() - started);
    return 0;
}

using Figures = std::array<double, 4>;

Figures figuresOf(const std::string& command)
{
    Figures figures{};
    std::FILE* const pipe = popen(command.c_str(), "r");
    std::array<char, 256> line{};
    if (!pipe || !std::fgets(line.data(), int(line.size()), pipe) || pclose(pipe) != 0) {
        std::fprintf(stderr, "this failed: %s\n", command.c_str());
        std::exit(1);
    }
    char* at = line.data();
    for (double& figure : figures)
        figure = std::strtod(at, &at);
    return figures;
}

/// The median of each figure over several runs that take turns.
std::vector<Figures> inTurn(const std::vector<std::string>& commands, int rounds)
{
    std::vector<std::vector<Figures>> runs(commands.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < commands.size(); ++i)
            runs[i].push_back(figuresOf(commands[i]));
    }
    std::vector<Figures> medians(commands.size());
    for (std::size_t i = 0; i < commands.size(); ++i) {
        for (std::size_t figure = 0; figure < medians[i].size(); ++figure) {
            std::vector<double> values;
            for (const Figures& run : runs[i])
                values.push_back(run[figure]);
            medians[i][figure] = median(values);
        }
    }
    return medians;
}

void measure(const std::string& self, const std::string& peers, int mebibytes)
{
    const QTemporaryDir scratch(QDir::tempPath() + QStringLiteral("/varnel-bench-store"));
    const std::string folder = scratch.path().toStdString();
    const std::string size = std::to_string(mebibytes);
    runToSuccess({self, "make", folder, size, std::to_string(mebibytes == 200 ? 5000 : mebibytes * 25)});
    const auto part = [&](const char* role) { return "'" + self + "' " + role + " '" + folder + "'"; };
    const std::string node =
        "node '" + peers + "/json-roundtrip.js' '" + folder + "/sessions.json' '" + folder + "/node.json'";
    const bool hasNode = system("command -v node >/dev/null") == 0;
    std::vector<std::string> commands{part("load"), part("load-save"), part("limit"), part("raw-save"),
                                      part("file-work")};
    if (hasNode)
        commands.push_back(node);
    const std::vector<Figures> figures = inTurn(commands, mebibytes == 200 ? 3 : 7);
    const std::string name = "store, " + size + " MB, ";
    report(name + "load", figures[0][0], "ms", "");
    report(name + "load, of the limit", figures[2][0] / figures[0][0], "x", ">= 0.4");
    report(name + "save", figures[1][1], "ms", "");
    report(name + "save, against raw write, sync and rename", figures[1][1] / figures[3][0], "x", "<= 2");
    report(name + "peak of a save, against the loaded data", figures[1][2], "x", "<= 1.2");
    report(name + "loaded data", figures[1][3], "MiB", "");
    if (hasNode) {
        report(name + "load and save, CPU, against the same in Node", figures[1][0] / figures[5][0], "x",
               "<= 0.25");
        report(name + "load and save without file work, CPU, against Node without it",
               (figures[1][0] - figures[4][0]) / figures[5][1], "x", "");
        report(name + "load and save, CPU, against Node without file work", figures[1][0] / figures[5][1],
               "x", "");
    } else {
        std::printf("%sload and save, CPU, against the same in Node\tskipped\tx\t<= 0.25\n", name.c_str());
    }
    if (mebibytes == 200) {
        const Figures changes = figuresOf(part("change"));
        report(name + "5000 conversations, one change, p99", changes[0], "ms", "<= 1");
        report(name + "flush at quit", changes[1], "ms", "< 1000");
    }
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString role = arguments.value(1);
    const QString folder = arguments.value(2);
    if (role == QLatin1String("make"))
        return makeFile(folder, arguments.value(3).toDouble(), arguments.value(4).toInt());
    if (role == QLatin1String("load"))
        return load(folder);
    if (role == QLatin1String("load-save"))
        return loadSave(folder);
    if (role == QLatin1String("limit"))
        return limit(folder);
    if (role == QLatin1String("raw-save"))
        return rawSave(folder);
    if (role == QLatin1String("file-work"))
        return fileWork(folder);
    if (role == QLatin1String("change"))
        return change(folder);
    for (const int mebibytes : {1, 20, 200})
        measure(argv[0], role.toStdString(), mebibytes);
    return 0;
}
