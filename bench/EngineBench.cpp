// Measures what a large profile costs: its start, and for how long the thread of the model is busy at a
// stretch while somebody types, sends, renames and searches and a model answers.
//
// varnel-bench-engine BIN_FOLDER

#include "LargeProfile.h"

using namespace varnel;
using namespace varnel::bench;

namespace {

void measureStart(double mebibytes, const std::string& server, const char* target)
{
    Profile profile(mebibytes, server);
    std::vector<double> times;
    for (int round = 0; round < 5; ++round) {
        const double started = now();
        const AppModel model(profile.services());
        times.push_back(now() - started);
    }
    report("start with " + std::to_string(int(mebibytes)) + " MB of conversations", median(times), "ms",
           target);
}

void type(AppModel& model)
{
    QString draft;
    for (int key = 0; key < 60; ++key) {
        draft += QLatin1Char(key % 7 == 6 ? ' ' : 'x');
        model.setDraft(draft);
        static_cast<void>(model.contextWarning());
        turnFor(10);
    }
}

/// Sends what is drafted and waits for the whole answer, while `meanwhile` goes on.
void converse(AppModel& model, const std::function<void()>& meanwhile = {})
{
    const std::size_t before = model.selectedSession()->messages.size();
    model.send();
    while (model.isBusy()) {
        if (meanwhile)
            meanwhile();
        turnFor(20);
    }
    if (model.selectedSession()->messages.size() != before + 2 || model.failure()) {
        std::fprintf(stderr, "the turn failed: %s\n", qPrintable(model.statusMessage()));
        std::exit(1);
    }
}

void measureWork(const std::string& server)
{
    Profile profile(200, server);
    AppModel model(profile.services());
    Heartbeat heartbeat;
    const auto measure = [&heartbeat](const char* name, const std::function<void()>& work) {
        heartbeat.reset();
        work();
        report(std::string("200 MB, busy at a stretch: ") + name, heartbeat.longest(), "ms", "<= 250");
    };
    const QUuid oldest = model.sessions()[model.sessions().size() - 1].id;
    model.select(oldest);
    model.chooseModel(QStringLiteral("practice-long:4b"));
    turnFor(3000);
    measure("typing", [&] { type(model); });
    measure("sending and streaming", [&] { converse(model); });
    int number = 0;
    measure("renaming and pinning while it is saved", [&] {
        for (; number < 40; ++number) {
            const QUuid id = model.sessions()[std::size_t(number) * 7].id;
            model.rename(id, QStringLiteral("title %1").arg(number));
            model.togglePinned(id);
            turnFor(30);
        }
    });
    measure("searching while it is saved", [&] {
        for (const QString& query :
             {QStringLiteral("configuration"), QStringLiteral("日本語"), QStringLiteral("no such word")}) {
            model.setSessionQuery(query);
            model.togglePinned(oldest);
            turnUntil([&] { return model.sessionHits().has_value(); });
        }
    });
    model.setDraft(QStringLiteral("again"));
    measure("all of it in a turn", [&] {
        converse(model, [&] {
            ++number;
            model.setDraft(QStringLiteral("draft %1").arg(number));
            model.rename(oldest, QStringLiteral("title %1").arg(number));
            model.setSessionQuery(QStringLiteral("memory %1").arg(number % 3));
        });
    });
    const double started = now();
    model.shutDown();
    report("200 MB, quitting while it is saved", now() - started, "ms", "");
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const PracticeHost host(argc > 1 ? argv[1] : "");
    measureStart(20, host.url(), "<= 150");
    measureStart(200, host.url(), "");
    measureWork(host.url());
}
