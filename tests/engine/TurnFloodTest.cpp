#include "engine/Stage.h"
#include "support/ManualClock.h"

#include <malloc.h>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

qint64 memoryInUse()
{
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<qint64>(info.uordblks) + static_cast<qint64>(info.hblkhd);
}

} // namespace

/// A reply of a million pieces.
class TurnFloodTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aMillionPiecesAreShownAtTheirPaceAndNoMore()
    {
        constexpr int pieces = 1'000'000;
        constexpr int batch = 1000;
        ManualClock clock;
        Stage stage;
        stage.time = &clock;
        stage.start();
        stage.send(QStringLiteral("one"));
        int shown = 0;
        connect(stage.model.get(), &AppState::messageChanged, this, [&shown] { ++shown; });
        // A piece is some 24 bytes of text.
        QString expected;
        const qint64 before = memoryInUse();
        qint64 most = 0;
        stage.chats.back()->beginReply(200, {});
        for (int first = 0; first < pieces; first += batch) {
            QByteArray lines;
            for (int number = first; number < first + batch; ++number) {
                const QByteArray piece = "piece " + QByteArray::number(number) + " of many words ";
                lines += line(piece);
                expected += QString::fromLatin1(piece);
            }
            stage.chats.back()->sendChunk(lines);
            QVERIFY(waitUntil([&] { return stage.chats.back()->unsentBytes() == 0; }));
            clock.advance(4ms);
            most = std::max(most, memoryInUse());
        }
        stage.chats.back()->sendChunk(doneLine);
        stage.chats.back()->endReply();
        QVERIFY(waitUntil([&] { return !stage.model->isBusy(); }, 60s));
        QCOMPARE(stage.lastText(), expected);
        // The first, one each 0.4 s of the four seconds, the last, and the end of the turn.
        QVERIFY2(shown <= 1 + 10 + 2, qPrintable(QString::number(shown)));
        const qint64 text = expected.size() * qint64(sizeof(QChar));
        // The text that this test expects is as long.
        const double growth = static_cast<double>(most - before - text) / static_cast<double>(text);
        qInfo("%.1f times the text of %lld bytes", growth, static_cast<long long>(text));
        QVERIFY2(growth <= 3, qPrintable(QString::number(growth)));
    }
};

QTEST_GUILESS_MAIN(TurnFloodTest)
#include "TurnFloodTest.moc"
