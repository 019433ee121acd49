#include "store/Preferences.h"
#include "base/Error.h"
#include "store/IniFile.h"
#include "store/NewConversation.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <limits>

using namespace varnel;

namespace {

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString flag(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

/// What the reader of a key answers, as text.
QString answer(const Preferences& preferences, const QString& name)
{
    const std::set<QString> disabled = preferences.disabledProviderModels();
    return QHash<QString, QString>{
        {QStringLiteral("connection"), preferences.connection().sshHost},
        {QStringLiteral("defaultModel"), preferences.defaultModel()},
        {QStringLiteral("temperature"), QString::number(preferences.temperature())},
        {QStringLiteral("context"), QString::number(preferences.contextLength())},
        {QStringLiteral("keepAlive"), preferences.keepAlive()},
        {QStringLiteral("passthrough"), flag(preferences.passthrough())},
        {QStringLiteral("contextButton"), flag(preferences.contextButton())},
        {QStringLiteral("onboardingComplete"), flag(preferences.onboardingComplete())},
        {QStringLiteral("workContext"),
         preferences.workContext() ? title(*preferences.workContext()) : QStringLiteral("none")},
        {QStringLiteral("disabledProviderModels"), QStringList(disabled.begin(), disabled.end()).join(u'|')},
        {QStringLiteral("remoteProvider"), rawValue(preferences.remoteProvider())},
        {QStringLiteral("remoteModel"), preferences.remoteModel(preferences.remoteProvider())},
    }
        .value(name);
}

} // namespace

class PreferencesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_file = m_folder->filePath(QStringLiteral("varnel/preferences.ini"));
    }

    void everyValueIsReadByItsRule_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("stored"); // as it stands in the file; null: nothing stored
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const char* stored, const char* expected) {
            QTest::addRow("%s=%s", name, stored ? stored : "(absent)")
                << QString::fromUtf8(name) << QByteArray(stored) << QString::fromUtf8(expected);
        };
        row("connection", nullptr, "");
        row("connection", "\"{\\\"mode\\\": \\\"thisMac\\\"}\"", "");
        row("connection", "12", "");
        row("connection", "a, b", "");
        row("connection",
            "\"{\\\"mode\\\":\\\"direct\\\",\\\"sshHost\\\":\\\"h\\\",\\\"sshUser\\\":\\\"\\\","
            "\\\"localPort\\\":1,\\\"remoteBind\\\":\\\"\\\",\\\"directURL\\\":\\\"\\\"}\"",
            "h");
        row("defaultModel", nullptr, "qwen2.5:14b");
        row("defaultModel", "", "qwen2.5:14b");
        row("defaultModel", "\" \"", " ");
        row("defaultModel", "\"a\\xd800z\"", "a\uFFFDz");
        row("temperature", nullptr, "0.7");
        for (const char* none :
             {"", "warm", "nan", "inf", "-inf", "0x1", "1, 2", "@Invalid()", "@ByteArray(\\xff)"}) {
            row("temperature", none, "0.7");
            row("context", none, "8192");
        }
        row("temperature", "3.5", "2");
        row("temperature", "2.0", "2");
        row("temperature", "1e999", "2");
        row("temperature", "-1", "0");
        row("temperature", "-0.0", "0");
        row("temperature", "1.25", "1.25");
        row("context", nullptr, "8192");
        row("context", "100", "512");
        row("context", "512", "512");
        row("context", "1000000", "131072");
        row("context", "4096.0", "4096");
        row("context", "99999999999999999999999", "131072");
        row("context", "-99999999999999999999999", "512");
        row("keepAlive", nullptr, "5m");
        row("keepAlive", "\" \\t\\n \"", "5m");
        row("keepAlive", "-1", "-1");
        row("keepAlive", "\" 10m \"", " 10m ");
        for (const char* flag : {"passthrough", "contextButton", "onboardingComplete"}) {
            row(flag, nullptr, "false");
            for (const char* yes : {"true", "1", "YES"})
                row(flag, yes, "true");
            for (const char* no : {"false", "0", "no", "2", "on", "", "true, true"})
                row(flag, no, "false");
        }
        row("workContext", nullptr, "none");
        row("workContext", "vision", "Vision");
        row("workContext", "Vision", "none");
        row("disabledProviderModels", nullptr, "");
        row("disabledProviderModels", "@Invalid()", "");
        row("disabledProviderModels", "openai\\na", "openai\na");
        row("disabledProviderModels", "\"z,\\n1\", openai\\na, openai\\na", "openai\na|z,\n1");
        row("remoteProvider", nullptr, "gemini");
        row("remoteProvider", "claude", "claude");
        row("remoteProvider", "Claude", "gemini");
        row("remoteModel", nullptr, "gemini-2.5-flash");
        row("remoteModel", "gemini-2.5-pro", "gemini-2.5-pro");
        row("remoteModel", "gpt-4o", "gemini-2.5-flash");
    }
    void everyValueIsReadByItsRule()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, stored);
        QFETCH(QString, expected);
        const QString file = m_folder->filePath(QStringLiteral("p.ini"));
        if (!stored.isNull())
            writeFile(file, "\xEF\xBB\xBF; mine\r\n[General]\r\n\r\nvarnel." + name.toUtf8() + '=' + stored +
                                "\r\n");
        const Preferences preferences(file);
        QCOMPARE(preferences.problem().value_or(QString()), QString());
        QCOMPARE(answer(preferences, name), expected);
    }

    void everyWriterIsReadBack()
    {
        const ConnectionSettings connection{.mode = ConnectionMode::SshTunnel,
                                            .sshHost = QStringLiteral("gpu, \"bóx\" 🙂)"),
                                            .sshUser = QStringLiteral("@me"),
                                            .localPort = 7,
                                            .remoteBind = {},
                                            .directURL = {},
                                            .sshIdentityFile = QStringLiteral("/keys/ü")};
        const std::set<QString> disabled{providerModelEntry(RemoteProvider::Claude, QStringLiteral("a, b")),
                                         QStringLiteral("@x\n\\y")};
        {
            Preferences preferences(m_file);
            preferences.setConnection(connection);
            preferences.setDefaultModel(QStringLiteral("hf.co/ü:q4, \"x\""));
            preferences.setTemperature(0.1);
            preferences.setContextLength(1000000);
            preferences.setKeepAlive(QStringLiteral("-1"));
            preferences.setPassthrough(true);
            preferences.setContextButton(true);
            preferences.setWorkContext(WorkContext::Reasoning);
            preferences.setDisabledProviderModels(disabled);
            preferences.setRemoteProvider(RemoteProvider::Claude);
            preferences.setRemoteModel(QStringLiteral("claude-opus-5"));
            preferences.setOnboardingComplete(true);
        }
        // Under another name nothing is remembered from the writing.
        const QString copy = m_folder->filePath(QStringLiteral("copy.ini"));
        QVERIFY(QFile::copy(m_file, copy));
        const Preferences preferences(copy);
        QVERIFY(!preferences.problem() && !preferences.connectionProblem());
        QVERIFY(preferences.connection() == connection);
        QCOMPARE(preferences.defaultModel(), QStringLiteral("hf.co/ü:q4, \"x\""));
        QCOMPARE(preferences.temperature(), 0.1);
        QCOMPARE(preferences.contextLength(), 131072);
        QVERIFY(readFile(copy).contains("varnel.context=1000000")); // as typed
        QCOMPARE(preferences.keepAlive(), QStringLiteral("-1"));
        QVERIFY(preferences.passthrough() && preferences.contextButton() && preferences.onboardingComplete());
        QVERIFY(preferences.workContext() == WorkContext::Reasoning);
        QVERIFY(preferences.disabledProviderModels() == disabled);
        QCOMPARE(preferences.remoteProvider(), RemoteProvider::Claude);
        QCOMPARE(preferences.remoteModel(RemoteProvider::Claude), QStringLiteral("claude-opus-5"));
        QCOMPARE(preferences.remoteModel(RemoteProvider::Gemini), QStringLiteral("gemini-2.5-flash"));
    }

    void shortListsSurvive()
    {
        for (const std::set<QString>& entries :
             {std::set<QString>(), {QStringLiteral("openai\ngpt-4o")}, {QStringLiteral("a, b")}}) {
            Preferences(m_file).setDisabledProviderModels(entries);
            const QString copy = m_folder->filePath(QStringLiteral("copy%1.ini").arg(++m_copies));
            QVERIFY(QFile::copy(m_file, copy));
            QVERIFY(Preferences(copy).disabledProviderModels() == entries);
        }
    }

    void changesFromOutsideAreSeenAndKept()
    {
        Preferences preferences(m_file);
        preferences.setKeepAlive(QStringLiteral("1m"));
        writeFile(m_file, "[General]\nvarnel.keepAlive=20m\nvarnel.passthrough=true\n[other]\nx=1\n");
        QCOMPARE(preferences.keepAlive(), QStringLiteral("20m"));
        preferences.setTemperature(1);
        const QByteArray content = readFile(m_file);
        QVERIFY2(content.contains("varnel.keepAlive=20m") && content.contains("[other]"),
                 content.constData());
    }

    void theSystemsFileIsUsedAndReadingMakesNone()
    {
        const QByteArray before = qgetenv("XDG_CONFIG_HOME");
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_folder->path()));
        Preferences preferences;
        qputenv("XDG_CONFIG_HOME", before);
        QCOMPARE(preferences.connection(), ConnectionSettings());
        QVERIFY(QDir(m_folder->path()).isEmpty());
        preferences.setPassthrough(true);
        const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
        QVERIFY(QFile::exists(m_file));
        QVERIFY(!(QFile::permissions(m_file) & others));
        preferences.setPassthrough(false);
        QVERIFY(!(QFile::permissions(m_file) & others));
        QCOMPARE(QDir(QFileInfo(m_file).path()).entryList(QDir::Files),
                 QStringList{QStringLiteral("preferences.ini")});
    }

    void whatIsNoIniFileIsKept_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("JSON") << QByteArray("{\n  \"varnel.temperature\": 1.5\n}\n");
        QTest::newRow("one bad line") << QByteArray("[General]\nvarnel.temperature=1.5\nvarnel.conte");
        QTest::newRow("zeros") << QByteArray(4096, '\0');
        QTest::newRow("zeros with a sign") << QByteArray("\0=\0", 3);
        QTest::newRow("picture") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
        QTest::newRow("UTF-16") << QByteArray("\xff\xfe[\0a\0]\0\n\0", 10);
        QTest::newRow("open section") << QByteArray("[General\nvarnel.temperature=1.5\n");
        QTest::newRow("open quotation mark")
            << QByteArray("[General]\nvarnel.keepAlive=\"5m\nvarnel.temperature=\"1.5\"\n");
    }
    void whatIsNoIniFileIsKept()
    {
        QFETCH(QByteArray, content);
        const QDir folder(m_folder->path());
        const QString file = folder.filePath(QStringLiteral("preferences.ini"));
        for (int round = 1; round <= 2; ++round) { // twice within the same second
            writeFile(file, content);
            Preferences preferences(file);
            QVERIFY(preferences.problem().value_or(QString()).contains(file));
            QCOMPARE(preferences.temperature(), 0.7);
            QCOMPARE(preferences.connection(), ConnectionSettings());
            QCOMPARE(readFile(file), content);
            preferences.setTemperature(1);
            QVERIFY(!preferences.problem());
            QCOMPARE(preferences.temperature(), 1.0);
            const QStringList kept = folder.entryList({QStringLiteral("preferences.unreadable-*.ini")});
            QCOMPARE(kept.size(), round);
            QCOMPARE(readFile(folder.filePath(kept.last())), content);
        }
        QVERIFY(!Preferences(file).problem());
        QCOMPARE(Preferences(file).temperature(), 1.0);
    }

    void quotationMarksAreCountedAsTheReaderDoes_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("badLine"); // 0: none
        QTest::newRow("open") << QByteArray("[General]\r\na=\"5m\r\nb=\"1\"\r\n") << 2;
        QTest::newRow("closed later") << QByteArray("a=\"5m\nb=1\"\n") << 1;
        QTest::newRow("last line") << QByteArray("a=1\nb=\"") << 2;
        QTest::newRow("escaped") << QByteArray("a=\"x\\\"\n") << 1;
        QTest::newRow("escaped backslash") << QByteArray("a=\"x\\\\\"\nb=2\\\\\nc=\"\n") << 3;
        QTest::newRow("outside of a value") << QByteArray("# 5\" wide\na=1\n") << 1;
        QTest::newRow("comments") << QByteArray("; 5\" wide\\\na=1 ; 5\"\nb=\"x;y\"\n") << 0;
        QTest::newRow("continued") << QByteArray("a=\"1 \\\r\n2\"\r\nb=\"3\\\n4\nc=\"\n") << 4;
        QTest::newRow("continued to nowhere") << QByteArray("a=\"1 \\\n") << 1;
    }
    void quotationMarksAreCountedAsTheReaderDoes()
    {
        QFETCH(QByteArray, content);
        QFETCH(int, badLine);
        const QString file = m_folder->filePath(QStringLiteral("p.ini"));
        writeFile(file, content);
        QCOMPARE(whyNotIni(file).value_or(QString()),
                 badLine ? QStringLiteral("line %1 has an open quotation mark").arg(badLine) : QString());
    }

    void whateverIsWrittenStaysReadable()
    {
        const QString alphabet = QStringLiteral("\"\"\\\\\n\r;,=#[]%@( )\tü你x0\u0001");
        QRandomGenerator random(1);
        QVariantHash written;
        {
            QSettings settings(m_file, QSettings::IniFormat);
            for (int i = 0; i < 2000; ++i) {
                QString text;
                for (quint32 length = random.bounded(8U); length > 0; --length)
                    text += alphabet[random.bounded(int(alphabet.size()))];
                const QString key = QStringLiteral("\";%1").arg(i);
                written.insert(key, i % 2 ? QVariant(text) : QVariant(QStringList{text, text}));
                settings.setValue(key, written.value(key));
            }
        }
        QCOMPARE(whyNotIni(m_file).value_or(QString()), QString());
        const QString copy = m_folder->filePath(QStringLiteral("copy.ini"));
        QVERIFY(QFile::copy(m_file, copy));
        const QSettings settings(copy, QSettings::IniFormat);
        for (auto entry = written.cbegin(); entry != written.cend(); ++entry)
            QCOMPARE(settings.value(entry.key()), entry.value());
    }

    void aFolderInItsPlaceIsSetAside()
    {
        QVERIFY(QDir().mkpath(m_file + QStringLiteral("/inside")));
        Preferences preferences(m_file);
        QVERIFY(preferences.problem()->contains(QStringLiteral("not a file")));
        preferences.setKeepAlive(QStringLiteral("1h"));
        QVERIFY(QFileInfo(m_file).isFile());
    }

    void failedWritesAreReportedAndRetried()
    {
        const QString blocker = QFileInfo(m_file).path();
        writeFile(blocker, "a file where the folder belongs");
        Preferences preferences(m_file);
        try {
            preferences.setKeepAlive(QStringLiteral("1h"));
            QFAIL("the write passed as done");
        } catch (const Error& error) {
            QVERIFY2(error.message().contains(blocker), qPrintable(error.message()));
        }
        QCOMPARE(preferences.keepAlive(), QStringLiteral("1h"));
        QVERIFY(QFile::remove(blocker));
        preferences.setPassthrough(true);
        QVERIFY(readFile(m_file).contains("varnel.keepAlive=1h"));
        QVERIFY(readFile(m_file).contains("varnel.passthrough=true"));
    }

    void anUnusableConnectionIsExplained()
    {
        const QString file = m_folder->filePath(QStringLiteral("p.ini"));
        writeFile(file, "varnel.connection=\"{\\\"mode\\\": \\\"carrier pigeon\\\"}\"");
        const Preferences preferences(file);
        QCOMPARE(preferences.connectionProblem().value_or(QString()),
                 QStringLiteral(
                     "The saved connection settings cannot be read. mode: unknown value \"carrier pigeon\""));
        QVERIFY(!preferences.problem());
    }

    void newConversationsFollowThePreferences()
    {
        Preferences preferences(m_file);
        preferences.setDefaultModel(QStringLiteral("llava"));
        preferences.setTemperature(9);
        preferences.setContextLength(1024);
        preferences.setKeepAlive(QStringLiteral("0"));
        preferences.setRemoteProvider(RemoteProvider::OpenAi);
        preferences.setRemoteModel(QStringLiteral("gpt-4o"));
        const Instant now = *fromIso8601("2026-11-15T20:25:47Z");
        ChatSession expected = newConversation(preferences, now);
        QVERIFY(!expected.id.isNull() && expected.id != newConversation(preferences, now).id);
        QCOMPARE(expected.title, QStringLiteral("New conversation"));
        QCOMPARE(expected.model, QStringLiteral("llava"));
        QCOMPARE(expected.temperature, 2.0);
        QCOMPARE(expected.contextLength, 1024);
        QCOMPARE(expected.keepAlive, QStringLiteral("0"));
        QCOMPARE(expected.remoteProvider, RemoteProvider::OpenAi);
        QCOMPARE(expected.remoteModel, QStringLiteral("gpt-4.1-mini")); // the first, not the preferred one
        QVERIFY(expected.createdAt == now && expected.updatedAt == now);
        QCOMPARE(newConversation(preferences, now, QStringLiteral("phi4")).model, QStringLiteral("phi4"));
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_file;
    int m_copies = 0;
};

QTEST_GUILESS_MAIN(PreferencesTest)
#include "PreferencesTest.moc"
