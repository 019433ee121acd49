#include "practice_host/PracticeHost.h"
#include "store/ConversationKeeper.h"
#include "store/NewConversation.h"
#include "support/Await.h"
#include "support/ProgramRun.h"

#include <QMap>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

/// A message as it was shown at some time, in milliseconds of the monotonic clock.
struct Shown
{
    bool isReply = false;
    QByteArray message;
    qint64 time = 0;
    qint64 length = 0;
};

std::vector<Shown> shownBy(const QByteArray& output)
{
    std::vector<Shown> all;
    const QList<QByteArray> lines = output.split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() == 4 && line != lines.last())
            all.push_back({words[0] == "assistant", words[1], words[2].toLongLong(), words[3].toLongLong()});
    }
    return all;
}

qint64 monotonicNow()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// What the next start of the program finds, by message; nothing if a file cannot be read.
std::optional<QMap<QByteArray, qint64>> stored(const QString& folder)
{
    QMap<QByteArray, qint64> lengths;
    const SystemClock clock;
    ConversationKeeper keeper(folder, clock, [](const SaveStatus&) {});
    const StoredConversations found = keeper.load(ChatSession());
    for (const QString& problem : found.problems)
        qWarning("%s", qPrintable(problem));
    for (const ChatSession& session : found.sessions) {
        for (const ChatMessage& message : session.messages)
            lengths[message.id.toByteArray()] = message.content.size();
    }
    return found.problems.empty() ? std::optional(lengths) : std::nullopt;
}

} // namespace

/// A program in the middle of its turns is killed at random moments. What it showed more than the period
/// before in which a running reply is kept is there again at the next start.
class TurnKillTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingShownFiveSecondsBeforeIsMissing()
    {
        practice::PracticeHost host{{.piece = 10ms, .slowStart = 0ms, .slowPiece = 0ms}};
        host.listen();
        const QTemporaryDir scratch;
        const int rounds = qEnvironmentVariableIntValue("VARNEL_KILL_ROUNDS");
        QRandomGenerator random(20261121);
        int replies = 0;
        for (int round = 0; round < (rounds > 0 ? rounds : 3); ++round) {
            QProcess turner;
            turner.start(programPath(QStringLiteral("varnel-test-turner")),
                         {scratch.path(), host.url().toString()});
            QVERIFY(waitUntil([&] { return turner.bytesAvailable() > 0; }));
            const qint64 lifetime = 200 + random.bounded(rounds > 0 ? 12'000 : 2'000);
            const qint64 end = monotonicNow() + lifetime;
            waitUntil([&] { return monotonicNow() >= end; }, 60s);
            const qint64 killed = monotonicNow();
            turner.kill();
            QVERIFY(waitUntil([&] { return turner.state() == QProcess::NotRunning; }));
            QCOMPARE(turner.exitStatus(), QProcess::CrashExit);
            const auto read = stored(scratch.filePath(QStringLiteral("data")));
            QVERIFY(read.has_value());
            const QMap<QByteArray, qint64>& found = *read;
            QByteArray prompt;
            for (const Shown& shown : shownBy(turner.readAllStandardOutput())) {
                if (!shown.isReply)
                    prompt = shown.message;
                // A prompt is on the disk before its request leaves.
                QVERIFY(!shown.isReply || shown.length == 0 || found.contains(prompt));
                if (killed - shown.time <= 5000)
                    continue;
                QVERIFY2(found.value(shown.message, -1) >= shown.length || shown.length == 0,
                         qPrintable(QStringLiteral("round %1: %2 of %3")
                                        .arg(round)
                                        .arg(found.value(shown.message, -1))
                                        .arg(shown.length)));
                ++replies;
            }
        }
        // Otherwise no run lived long enough, and this has shown nothing.
        QVERIFY(rounds == 0 || replies > 0);
    }
};

QTEST_GUILESS_MAIN(TurnKillTest)
#include "TurnKillTest.moc"
