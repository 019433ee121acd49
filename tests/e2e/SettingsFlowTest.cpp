#include "practice_host/PracticeHost.h"
#include "support/Await.h"
#include "support/ProgramRun.h"
#include "support/XDisplay.h"

#include <QTemporaryDir>
#include <QTest>

#include <QDirIterator>

using namespace varnel::practice;
using namespace varnel::test;
using namespace std::chrono_literals;

/// A person's very first start of the built program, then its models and its settings, by keyboard.
class SettingsFlowTest : public QObject
{
    Q_OBJECT

    QStringList m_requests;
    PracticeHost m_host{{.piece = 0ms}, [this](const QString& line) { m_requests.append(line); }};
    qsizetype m_looked = 0;
    QTemporaryDir m_data;
    QTemporaryDir m_config;
    std::unique_ptr<XDisplay> m_display;
    ProgramRun m_program;

    void key(const char* keys, int times = 1) const
    {
        for (int i = 0; i < times; ++i)
            m_display->key(QString::fromLatin1(keys));
    }
    /// Waits for a request after the one that was asked for last; whether it came.
    bool asked(const char* request)
    {
        return waitUntil([&] {
            while (m_looked < m_requests.size()) {
                if (m_requests[m_looked++].contains(QLatin1String(request)))
                    return true;
            }
            return false;
        });
    }
    /// Whether a file of that name holds a text by and by.
    static bool holds(const QTemporaryDir& folder, const QString& name, const QByteArray& text)
    {
        return waitUntil([&] {
            QDirIterator found(folder.path(), {name}, QDir::Files, QDirIterator::Subdirectories);
            QFile file(found.hasNext() ? found.next() : QString());
            return file.open(QIODevice::ReadOnly) && file.readAll().contains(text);
        });
    }
    QString address() const { return QStringLiteral("127.0.0.1:%1").arg(m_host.port()); }

private Q_SLOTS:
    void initTestCase()
    {
        const QStringList missing = XDisplay::missingPrograms();
        if (!missing.isEmpty())
            QSKIP(
                qPrintable(QStringLiteral("not installed: %1; scripts/setup does").arg(missing.join(u", "))));
        m_host.listen();
        m_display = std::make_unique<XDisplay>();
        m_program.setVariable("DISPLAY", m_display->name());
        m_program.setVariable("QT_QPA_PLATFORM", QStringLiteral("xcb"));
        m_program.setVariable("LANG", QStringLiteral("C.UTF-8"));
        m_program.setVariable("XDG_DATA_HOME", m_data.path());
        m_program.setVariable("XDG_CONFIG_HOME", m_config.path());
        m_program.setVariable("VARNEL_LIBRARY_BASE", m_host.url().toString());
        m_program.start({});
        QVERIFY(waitUntil([&] { return m_display->focusWindow(m_program.process().processId()); }));
    }

    void theFirstRunLeadsToAFirstReply()
    {
        key("Tab", 4); // from Next past Close to the third place where Ollama may run
        key("space");
        key("Tab");
        key("ctrl+a");
        m_display->type(address());
        key("Tab", 2); // past Skip
        key("Return");
        QVERIFY(asked("/api/tags"));
        QVERIFY(holds(m_config, QStringLiteral("preferences.ini"), "http://" + address().toUtf8()));
        key("Return"); // the models; the keyboard is still at Next
        key("Tab", 2); // past Close to the list
        key("Down");
        key("Tab", 4); // past another model, Skip and Back
        key("Return");
        key("Return"); // no keys
        QVERIFY(holds(m_config, QStringLiteral("preferences.ini"), "varnel.onboardingComplete=true"));
        QVERIFY(holds(m_config, QStringLiteral("preferences.ini"), "varnel.defaultModel=practice-"));
        m_display->type(QStringLiteral("Hello"));
        key("Return");
        QVERIFY(asked("/api/chat"));
        QVERIFY(holds(m_data, QStringLiteral("sessions.json"), "\"assistant\""));
    }

    void aModelIsPulledAndRemoved()
    {
        key("ctrl+m");
        m_display->type(QStringLiteral("practice-reader"));
        key("Return");
        QVERIFY(asked("/search"));
        key("Down");
        key("Return");
        QVERIFY(asked("/api/pull"));
        QVERIFY(asked("/api/tags"));
        // Back from the library to the installed ones.
        key("shift+Tab", 3);
        key("Delete");
        key("Tab");
        key("Return");
        QVERIFY(asked("/api/delete"));
        key("Escape");
    }

    void theConnectionIsEditedAndTested()
    {
        PracticeHost other;
        other.listen();
        key("ctrl+comma");
        key("Tab", 8); // past the pages and the places where Ollama may run
        key("ctrl+a");
        m_display->type(QStringLiteral("127.0.0.1:%1").arg(other.port()));
        key("Tab");
        key("Return");
        QVERIFY(holds(m_config, QStringLiteral("preferences.ini"), QByteArray::number(other.port())));
        key("Escape");
        key("ctrl+q");
        QVERIFY(m_program.wait());
        QCOMPARE(m_program.process().exitCode(), 0);
        QCOMPARE(m_program.errors(), QByteArray());
    }
};

QTEST_GUILESS_MAIN(SettingsFlowTest)
#include "SettingsFlowTest.moc"
