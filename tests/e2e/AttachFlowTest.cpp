#include "e2e/WindowFlow.h"
#include "support/Await.h"

#include <QFile>
#include <QTest>

using namespace varnel::practice;
using namespace varnel::test;
using namespace std::chrono_literals;

/// What another program gives: a file that is dragged into the window, a picture of the clipboard.
class AttachFlowTest : public WindowFlow
{
    Q_OBJECT

    ProgramRun m_giver;

    static constexpr QPoint inTheGiver{50, 710};
    static constexpr QPoint inTheTranscript{690, 300};

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString missing = makeWindow("practice-vision:11b"); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        QVERIFY(openWindow());
        QFile file(m_giver.folder() + QStringLiteral("/tides.txt"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("High water at noon\n") > 0);
        m_giver.setVariable("DISPLAY", m_window->display().name());
        m_giver.setVariable("QT_QPA_PLATFORM", QStringLiteral("xcb"));
        m_giver.startProgram(programPath(QStringLiteral("varnel-test-giver")), {file.fileName()});
        QVERIFY(waitUntil(
            [this] { return !m_window->display().placeOf(m_giver.process().processId()).isEmpty(); }));
    }

    void aFileIsDraggedIntoTheWindow()
    {
        const XDisplay& display = m_window->display();
        display.moveTo(inTheGiver);
        display.pressButton();
        display.moveTo(inTheGiver + QPoint(8, 0));
        display.moveTo(inTheTranscript);
        // A drag is told of every movement, and answers take their time.
        QVERIFY(waitUntil([&] {
            display.moveTo(inTheTranscript + QPoint(4, 0));
            display.moveTo(inTheTranscript);
            return !m_window->tree().filter(QStringLiteral("Drop to attach")).isEmpty();
        }));
        display.releaseButton();
        QVERIFY(m_window->shows(QStringLiteral("list item | tides")));
        QVERIFY(m_window->showsNoMore(QStringLiteral("notification | Drop to attach")));
    }

    void aPictureIsPastedBesideIt()
    {
        QVERIFY(m_window->display().focusWindow(m_window->program().process().processId()));
        m_window->key("ctrl+v");
        QVERIFY(m_window->shows(QStringLiteral("list item | Picture")));
        QVERIFY(m_window->shows(QStringLiteral("list item | tides")));
    }

    void bothGoAlongWithTheMessage()
    {
        m_window->type(QStringLiteral("When is high water"));
        m_window->key("Return");
        QVERIFY(waitUntil([this] {
            const QByteArray saved = m_window->stored(QStringLiteral("sessions.json"));
            return saved.contains("[file] tides\\nHigh water at noon\\n") &&
                   saved.contains("1 image arrived:\\n\\n- PNG");
        }));
        QVERIFY(m_window->showsNoMore(QStringLiteral("list item | tides")));
        QVERIFY(m_window->quit());
    }
};

QTEST_GUILESS_MAIN(AttachFlowTest)
#include "AttachFlowTest.moc"
