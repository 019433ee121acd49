#include "practice_host/PracticeHost.h"
#include "support/Await.h"
#include "support/ProgramRun.h"
#include "support/XDisplay.h"

#include <QTest>

#include <QDir>
#include <QDirIterator>
#include <QFile>

using namespace varnel::practice;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

/// What a file below a folder holds; empty while there is none of that name.
QByteArray stored(const QString& root, const QString& name)
{
    QDirIterator found(root, {name}, QDir::Files, QDirIterator::Subdirectories);
    QFile file(found.hasNext() ? found.next() : QString());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

/// The composer of the built program by keyboard: a long paste, and a prompt that is edited.
class ComposerFlowTest : public QObject
{
    Q_OBJECT

    PracticeHost m_host{{.piece = 0ms}};
    std::unique_ptr<XDisplay> m_display;
    ProgramRun m_program;

    QByteArray stored(const QString& name) const { return ::stored(m_program.folder(), name); }
    void key(const char* keys) const { m_display->key(QString::fromLatin1(keys)); }

private Q_SLOTS:
    void initTestCase()
    {
        const QStringList missing = XDisplay::missingPrograms();
        if (!missing.isEmpty())
            QSKIP(
                qPrintable(QStringLiteral("not installed: %1; scripts/setup does").arg(missing.join(u", "))));
        m_host.listen();
        m_display = std::make_unique<XDisplay>();
        m_program.setPreferences(windowPreferences(m_host.url()));
        m_program.setVariable("DISPLAY", m_display->name());
        m_program.setVariable("QT_QPA_PLATFORM", QStringLiteral("xcb"));
        m_program.setVariable("LANG", QStringLiteral("C.UTF-8"));
        m_program.start({});
        QVERIFY(waitUntil([&] { return m_display->focusWindow(m_program.process().processId()); }));
    }

    void aLongPasteGoesAlongAsAFile()
    {
        // Each time twice as long; the last paste is beyond what a message takes.
        m_display->type(QStringLiteral("0123456789").repeated(20));
        for (int doubling = 0; doubling < 6; ++doubling) {
            for (const char* const keys : {"ctrl+a", "ctrl+c", "ctrl+End", "ctrl+v"})
                key(keys);
        }
        key("ctrl+a");
        key("ctrl+c");
        key("ctrl+v");
        QVERIFY(waitUntil([&] { return stored(QStringLiteral("library.json")).contains("Pasted"); }));
        key("ctrl+a");
        m_display->type(QStringLiteral("What is this"));
        key("Return");
        QVERIFY(waitUntil([&] {
            const QByteArray sessions = stored(QStringLiteral("sessions.json"));
            return sessions.contains("What is this") && sessions.contains("[file]") &&
                   sessions.contains(QByteArray("0123456789").repeated(1280));
        }));
        QVERIFY(waitUntil([this] { return m_host.activeStreams() == 0; }));
    }

    void theLastPromptIsEditedAndSentAgain()
    {
        key("Up");
        m_display->type(QStringLiteral(" again"));
        key("Return");
        QVERIFY(waitUntil(
            [&] { return stored(QStringLiteral("sessions.json")).contains("What is this again"); }));
        QVERIFY(waitUntil([this] { return m_host.activeStreams() == 0; }));
        key("ctrl+q");
        QVERIFY(m_program.wait());
        QCOMPARE(m_program.process().exitCode(), 0);
        QCOMPARE(m_program.errors(), QByteArray());
    }
};

QTEST_GUILESS_MAIN(ComposerFlowTest)
#include "ComposerFlowTest.moc"
