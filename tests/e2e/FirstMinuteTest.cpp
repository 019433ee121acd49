#include "practice_host/PracticeHost.h"
#include "support/Await.h"
#include "support/ProgramRun.h"
#include "support/XDisplay.h"

#include <QTest>

using namespace varnel::practice;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

// Where things are at the size of the display, which the window fills.
constexpr QRect readingColumn(330, 60, 640, 500); // above what lies over the text: the way back to its end
constexpr QRect scrollBar(1108, 50, 12, 582);
constexpr QRect scrollBarBegin(1108, 50, 12, 200);
constexpr QRect scrollBarEnd(1108, 618, 12, 14);
constexpr QPoint middleOfTranscript(690, 300);
constexpr QPoint sendButton(1026, 720);

/// Whether a picture has one colour only.
bool isPlain(const QImage& picture)
{
    QImage filled = picture;
    filled.fill(picture.pixelColor(0, 0));
    return picture == filled;
}

} // namespace

/// A person's first minute with the built program, by keyboard and mouse.
class FirstMinuteTest : public QObject
{
    Q_OBJECT

    PracticeHost m_host{{.piece = 8ms}};
    std::unique_ptr<XDisplay> m_display;
    ProgramRun m_program;

    /// Starts the program on the display and waits until its window takes what is typed.
    bool open(ProgramRun& program) const
    {
        program.setPreferences(windowPreferences(m_host.url()));
        program.setVariable("DISPLAY", m_display->name());
        program.setVariable("QT_QPA_PLATFORM", QStringLiteral("xcb"));
        program.setVariable("LANG", QStringLiteral("C.UTF-8"));
        program.start({});
        return waitUntil([&] { return m_display->focusWindow(program.process().processId()); });
    }
    /// Sends what stands in the composer by Enter and waits until the reply runs.
    bool sendByEnter()
    {
        m_display->key(QStringLiteral("Return"));
        return waitUntil([this] { return m_host.activeStreams() == 1; });
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QStringList missing = XDisplay::missingPrograms();
        if (!missing.isEmpty())
            QSKIP(
                qPrintable(QStringLiteral("not installed: %1; scripts/setup does").arg(missing.join(u", "))));
        m_host.listen();
        m_display = std::make_unique<XDisplay>();
        QVERIFY(open(m_program));
    }

    void aModelIsChosenAndAPromptIsStreamed()
    {
        const QImage empty = m_display->pictureAtRest(readingColumn);
        m_display->key(QStringLiteral("ctrl+shift+m"));
        QVERIFY(waitUntil([&] { return m_display->picture(readingColumn) != empty; }));
        m_display->type(QStringLiteral("practice-long"));
        m_display->key(QStringLiteral("Return"));
        QVERIFY(waitUntil([&] { return m_display->picture(readingColumn) != empty; })); // names another model
        m_display->type(QStringLiteral("Tell me a long story"));
        QVERIFY(sendByEnter());
    }

    void whatIsReadStaysWhileMoreArrives()
    {
        const QImage early = m_display->picture(readingColumn);
        QVERIFY(
            waitUntil([&] { return m_display->picture(readingColumn) != early; })); // it follows the reply
        // Until there is something to scroll, and the view has gone along with it.
        QVERIFY(waitUntil([&] {
            return isPlain(m_display->picture(scrollBarBegin)) && !isPlain(m_display->picture(scrollBarEnd));
        }));
        m_display->click(middleOfTranscript, 4);
        QVERIFY(waitUntil([&] { return isPlain(m_display->picture(scrollBarEnd)); })); // it has let go
        const QImage read = m_display->pictureAtRest(readingColumn);
        for (int arrival = 0; arrival < 3; ++arrival) {
            const QImage length = m_display->picture(scrollBar);
            QVERIFY(waitUntil([&] { return m_display->picture(scrollBar) != length; })); // more has arrived
            QCOMPARE(m_display->picture(readingColumn), read);
        }
        QCOMPARE(m_host.activeStreams(), 1);
    }

    void aReplyIsStoppedByMouseAndByKey()
    {
        m_display->click(sendButton);
        QVERIFY(waitUntil([this] { return m_host.activeStreams() == 0; }));
        m_display->type(QStringLiteral("And another one"));
        QVERIFY(sendByEnter());
        m_display->key(QStringLiteral("Escape"));
        QVERIFY(waitUntil([this] { return m_host.activeStreams() == 0; }));
    }

    void quittingLeavesNothingBehind()
    {
        m_display->type(QStringLiteral("One more to quit upon"));
        QVERIFY(sendByEnter());
        m_display->key(QStringLiteral("ctrl+q"));
        QVERIFY(m_program.wait());
        QCOMPARE(m_program.process().exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_program.process().exitCode(), 0);
        QVERIFY(waitUntil([this] { return m_host.activeStreams() == 0; }));
        QCOMPARE(m_program.errors(), QByteArray()); // not a word from the screens either
    }

    void theEndOfTheSessionIsAnOrdinaryQuit()
    {
        ProgramRun program;
        QVERIFY(open(program));
        m_display->type(QStringLiteral("Still talking when the session ends"));
        QVERIFY(sendByEnter());
        program.process().terminate();
        QVERIFY(program.wait());
        QCOMPARE(program.process().exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.process().exitCode(), 0);
        QVERIFY(waitUntil([this] { return m_host.activeStreams() == 0; }));
        QCOMPARE(program.errors(), QByteArray());
    }
};

QTEST_GUILESS_MAIN(FirstMinuteTest)
#include "FirstMinuteTest.moc"
