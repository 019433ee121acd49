#include "practice_host/PracticeHost.h"
#include "support/Await.h"
#include "support/Keyring.h"
#include "support/WindowRun.h"

#include <QDirIterator>
#include <QTest>

using namespace varnel::practice;
using namespace varnel::test;
using namespace std::chrono_literals;

/// The pages of the settings by keyboard, with a real keyring behind them.
class SettingsPagesTest : public QObject
{
    Q_OBJECT

    PracticeHost m_host;
    std::unique_ptr<WindowRun> m_window;
    ProgramRun m_keyring;

    /// What a program of the session prints.
    QByteArray output(const QString& program, const QStringList& arguments) const
    {
        const EnvironmentVariable bus("DBUS_SESSION_BUS_ADDRESS", m_window->bus().toUtf8());
        QProcess process;
        process.start(program, arguments);
        waitUntil([&] { return process.state() == QProcess::NotRunning; });
        return process.readAllStandardOutput();
    }
    QByteArray savedKey() const
    {
        return output(QStringLiteral("secret-tool"),
                      {QStringLiteral("lookup"), QStringLiteral("service"), QStringLiteral("app.varnel"),
                       QStringLiteral("account"), QStringLiteral("OPENAI_API_KEY")});
    }
    /// Goes to a page by the keyboard.
    bool turnTo(const char* page)
    {
        const QString name = QLatin1String(page);
        if (!m_window->focus(page))
            return false;
        m_window->key("Return");
        return m_window->shows(QStringLiteral("panel | ") + name);
    }

private Q_SLOTS:
    void initTestCase()
    {
        if (const QString missing = WindowRun::missing(); !missing.isEmpty())
            QSKIP(qPrintable(missing));
        if (!keyringInstalled())
            QSKIP("not installed: a keyring; scripts/setup does");
        m_host.listen();
        m_window = std::make_unique<WindowRun>();
        m_keyring.setVariable("DBUS_SESSION_BUS_ADDRESS", m_window->bus());
        m_keyring.startProgram(QStringLiteral("gnome-keyring-daemon"),
                               {QStringLiteral("--foreground"), QStringLiteral("--unlock"),
                                QStringLiteral("--components=secrets")});
        m_keyring.process().write("password of the tests");
        m_keyring.process().closeWriteChannel();
        QVERIFY(waitUntil([this] {
            return output(QStringLiteral("dbus-send"),
                          {QStringLiteral("--session"), QStringLiteral("--print-reply"),
                           QStringLiteral("--dest=org.freedesktop.DBus"), QStringLiteral("/"),
                           QStringLiteral("org.freedesktop.DBus.NameHasOwner"),
                           QStringLiteral("string:org.freedesktop.secrets")})
                .contains("true");
        }));
        m_window->program().setPreferences(windowPreferences(m_host.url()));
        QVERIFY(m_window->open());
        QVERIFY(m_window->shows(QStringLiteral("status bar | Connected")));
        m_window->key("ctrl+comma");
        QVERIFY(m_window->shows(QStringLiteral("push button | Connection | focusable focused")));
    }

    void newConversationsBeginWithWhatIsSetHere()
    {
        QVERIFY(turnTo("Models"));
        QVERIFY(m_window->focus("Temperature"));
        m_window->key("ctrl+a");
        m_window->type(QStringLiteral("0.25"));
        m_window->key("Tab");
        QVERIFY(waitUntil([this] {
            return m_window->stored(QStringLiteral("preferences.ini")).contains("varnel.temperature=0.25");
        }));
    }

    void aKeyIsKeptInTheKeyringOnly()
    {
        QVERIFY(turnTo("Providers"));
        QVERIFY(m_window->focus("OpenAI key"));
        m_window->type(QStringLiteral("sk-of-the-tests"));
        m_window->key("Return");
        QVERIFY(waitUntil([this] { return savedKey() == "sk-of-the-tests"; }));
        QCOMPARE(m_window->stored(QStringLiteral("preferences.ini")).indexOf("sk-of-the-tests"), -1);
        QVERIFY(m_window->press("Remove the OpenAI key"));
        QVERIFY2(waitUntil([this] { return savedKey().isEmpty(); }),
                 qPrintable(m_window->tree().join(QLatin1Char('\n'))));
    }

    void aBackupIsMadeAndOffered()
    {
        QVERIFY(turnTo("Files"));
        QVERIFY(m_window->shows(QStringLiteral("label | There is no backup yet.")));
        QVERIFY(m_window->focus("Back up now"));
        m_window->key("Return");
        QVERIFY(m_window->shows(QStringLiteral("push button | Restore the backup of ")));
    }

    void theProgramTellsWhatItIs()
    {
        QVERIFY(turnTo("About"));
        QVERIFY(m_window->shows(QStringLiteral("label | Version ")));
        QVERIFY(m_window->shows(QStringLiteral("label | libcurl, curl, ")));
        m_window->key("Escape");
        QVERIFY(m_window->shows(QStringLiteral("text | Message | focusable focused")));
        QVERIFY(m_window->quit());
    }
};

QTEST_GUILESS_MAIN(SettingsPagesTest)
#include "SettingsPagesTest.moc"
