#include "practice_host/PracticeHost.h"
#include "support/Await.h"
#include "support/ProgramRun.h"
#include "support/XDisplay.h"

#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QTest>

using namespace varnel::practice;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

// Where things are at the size of the display, which the window fills.
constexpr QRect readingColumn(330, 60, 640, 460);
constexpr QRect firstWords(330, 60, 640, 90); // above the first footer, whose rate is of one run only

QJsonArray messagesOf(const QJsonObject& session)
{
    return session.value(QStringLiteral("messages")).toArray();
}

QString text(const QJsonValue& message, const char* key)
{
    return message.toObject().value(QLatin1String(key)).toString();
}

} // namespace

/// Conversations in the built program, by keyboard and mouse, looked at in the files it keeps.
class ConversationFlowTest : public QObject
{
    Q_OBJECT

    PracticeHost m_host{{.piece = 4ms}};
    std::unique_ptr<XDisplay> m_display;
    std::unique_ptr<ProgramRun> m_program;

    QString home() const { return m_program->process().processEnvironment().value(QStringLiteral("HOME")); }
    bool open() const
    {
        m_program->start({});
        return waitUntil([&] { return m_display->focusWindow(m_program->process().processId()); });
    }
    bool quit()
    {
        m_display->key(QStringLiteral("ctrl+q"));
        return m_program->wait() && m_program->process().exitCode() == 0;
    }
    /// The conversations as they stand on the disk.
    QList<QJsonObject> saved() const
    {
        QList<QJsonObject> sessions;
        QDirIterator files(home(), {QStringLiteral("sessions.json")}, QDir::Files | QDir::Hidden,
                           QDirIterator::Subdirectories);
        if (!files.hasNext())
            return sessions;
        QFile file(files.next());
        if (!file.open(QIODevice::ReadOnly))
            return sessions;
        for (const QJsonValue session : QJsonDocument::fromJson(file.readAll()).array())
            sessions.append(session.toObject());
        return sessions;
    }
    bool say(const QString& prompt) const
    {
        m_display->type(prompt);
        m_display->key(QStringLiteral("Return"));
        return waitUntil([this] { return m_host.activeStreams() == 1; }) &&
               waitUntil([this] { return m_host.activeStreams() == 0; });
    }
    /// Goes from the composer back to the action that is that many before the last one of the last reply,
    /// and presses it.
    void pressAction(int fromEnd) const
    {
        for (int i = 0; i <= fromEnd; ++i)
            m_display->key(QStringLiteral("shift+Tab"));
        m_display->key(QStringLiteral("Return"));
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
        m_program = std::make_unique<ProgramRun>();
        m_program->setPreferences(windowPreferences(m_host.url()));
        m_program->setVariable("DISPLAY", m_display->name());
        m_program->setVariable("QT_QPA_PLATFORM", QStringLiteral("xcb"));
        m_program->setVariable("LANG", QStringLiteral("C.UTF-8"));
        QVERIFY(open());
    }
    void cleanupTestCase()
    {
        if (m_program && m_program->process().state() != QProcess::NotRunning)
            QVERIFY(quit());
    }

    void aReplyIsMadeAgainAndTheFirstOneComesBack()
    {
        QVERIFY(say(QStringLiteral("Tell me of lighthouses")));
        const auto replyId = [this] {
            const QList<QJsonObject> sessions = saved();
            const QJsonArray messages = sessions.isEmpty() ? QJsonArray() : messagesOf(sessions[0]);
            const bool isWhole =
                messages.size() == 2 && messages[1].toObject().contains(QLatin1String("duration"));
            return isWhole ? text(messages[1], "id") : QString();
        };
        QVERIFY(waitUntil([&] { return !replyId().isEmpty(); }));
        const QString first = replyId();
        pressAction(3); // copy, regenerate, hand off, save, more
        QVERIFY(waitUntil([&] { return !replyId().isEmpty() && replyId() != first; }));
        m_display->pictureAtRest(readingColumn);
        // What offers the earlier version stands between the conversation and the composer.
        m_display->key(QStringLiteral("ctrl+k"));
        m_display->key(QStringLiteral("Escape"));
        pressAction(1);
        QVERIFY(waitUntil([&] { return replyId() == first; }));
    }

    void aConversationIsForkedFromTheMenu()
    {
        m_display->key(QStringLiteral("ctrl+k")); // to a place that is known
        m_display->key(QStringLiteral("Escape"));
        pressAction(0);
        m_display->key(QStringLiteral("Down"));
        m_display->key(QStringLiteral("Return"));
        QVERIFY(waitUntil([this] { return saved().size() == 2; }));
        const QList<QJsonObject> sessions = saved();
        QCOMPARE(text(messagesOf(sessions[0]).last(), "content"),
                 text(messagesOf(sessions[1]).last(), "content"));
    }

    void searchLeadsToTheMessage()
    {
        m_display->key(QStringLiteral("ctrl+n"));
        QVERIFY(say(QStringLiteral("Something about a walrus")));
        m_display->key(QStringLiteral("ctrl+n"));
        const QImage empty = m_display->pictureAtRest(readingColumn);
        m_display->key(QStringLiteral("ctrl+k"));
        m_display->type(QStringLiteral("walrus"));
        m_display->key(QStringLiteral("Return"));
        QVERIFY(waitUntil([&] { return m_display->picture(readingColumn) != empty; }));
        m_display->key(QStringLiteral("Escape")); // the marks go, the conversation stays
        QVERIFY(say(QStringLiteral("And what does it eat")));
        QVERIFY(waitUntil([this] {
            const QList<QJsonObject> sessions = saved();
            return !sessions.isEmpty() && messagesOf(sessions[0]).size() == 4 &&
                   text(sessions[0], "title").contains(QLatin1String("walrus"));
        }));
        m_display->key(QStringLiteral("ctrl+k"));
        m_display->key(QStringLiteral("Escape"));
    }

    void everythingIsThereAfterARestart()
    {
        m_display->type(QStringLiteral("A draft that waits"));
        m_display->pictureAtRest(readingColumn);
        const QImage before = m_display->picture(firstWords);
        QVERIFY(quit());
        QVERIFY(open());
        QVERIFY(waitUntil([&] { return m_display->picture(firstWords) == before; }));
        m_display->key(QStringLiteral("Return"));
        QVERIFY(waitUntil([this] {
            const QList<QJsonObject> sessions = saved();
            const QJsonArray messages = sessions.isEmpty() ? QJsonArray() : messagesOf(sessions[0]);
            return messages.size() >= 5 &&
                   text(messages[4], "content") == QLatin1String("A draft that waits");
        }));
        QVERIFY(waitUntil([this] { return m_host.activeStreams() == 0; }));
    }

    void aSecondInstanceLeavesTheFirstOne()
    {
        QProcess second;
        second.setProcessEnvironment(m_program->process().processEnvironment());
        second.start(programPath(QStringLiteral("varnel")), QStringList());
        QVERIFY(waitUntil([&] { return second.state() == QProcess::NotRunning; }));
        QCOMPARE(second.exitCode(), 0);
        QCOMPARE(m_program->process().state(), QProcess::Running);
    }

    void theWindowOpensOnWayland()
    {
        const QString weston = QStandardPaths::findExecutable(QStringLiteral("weston"));
        if (weston.isEmpty())
            QSKIP("not installed: weston; scripts/setup does");
        ProgramRun window;
        ProgramRun compositor;
        compositor.startProgram(weston, {QStringLiteral("--backend=headless-backend.so"),
                                         QStringLiteral("--socket=wayland-test"),
                                         QStringLiteral("--idle-time=0"), QStringLiteral("--no-config")});
        const QString runtime =
            compositor.process().processEnvironment().value(QStringLiteral("XDG_RUNTIME_DIR"));
        QVERIFY(waitUntil([&] { return QFile::exists(runtime + QStringLiteral("/wayland-test")); }));
        window.setPreferences(windowPreferences(m_host.url()));
        window.setVariable("WAYLAND_DISPLAY", runtime + QStringLiteral("/wayland-test"));
        window.setVariable("QT_QPA_PLATFORM", QStringLiteral("wayland"));
        // A compositor without a keyboard makes Qt's own input method for it crash.
        window.setVariable("QT_IM_MODULE", QStringLiteral("compose"));
        window.setVariable("QT_LOGGING_RULES", QStringLiteral("varnel.start.debug=true"));
        window.setVariable("LANG", QStringLiteral("C.UTF-8"));
        window.start({});
        QVERIFY(waitUntil([&] { return window.errors().contains("first frame"); }));
        window.process().terminate();
        QVERIFY(window.wait());
        QCOMPARE(window.process().exitCode(), 0);
        compositor.process().terminate();
        QVERIFY(compositor.wait());
    }
};

QTEST_GUILESS_MAIN(ConversationFlowTest)
#include "ConversationFlowTest.moc"
