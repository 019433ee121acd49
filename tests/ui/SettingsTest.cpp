#include "support/SshServer.h"
#include "ui/QuietTest.h"
#include "ui/SheetFixture.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QSettings>
#include <QTcpServer>
#include <QTest>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

int freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

} // namespace

/// The settings, the first run and the models, by keyboard and mouse.
class SettingsTest : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void aTypedAddressIsAppliedWhenItsFieldIsLeft()
    {
        SheetFixture fixture;
        fixture.open(Qt::Key_Comma);
        practice::PracticeHost other;
        other.listen();
        const QString before = fixture.app->connection().directURL;
        const QString typed = QStringLiteral("127.0.0.1:%1").arg(other.port());
        QVERIFY(fixture.reach("This computer")); // the choice of a URL has the name of its field
        fixture.press(Qt::Key_Tab);
        fixture.press(Qt::Key_Tab);
        fixture.press(Qt::Key_Tab);
        QVERIFY(fixture.fill("URL", typed));
        QCOMPARE(fixture.app->connection().directURL, before); // not with every letter
        QVERIFY(fixture.click("Test"));
        QCOMPARE(fixture.app->connection().directURL, QStringLiteral("http://") + typed);
        QCOMPARE(fixture.profile.preferences.connection().directURL, QStringLiteral("http://") + typed);
        QVERIFY(waitUntil([&] { return fixture.app->linkState() == LinkState::Connected; }));
        QVERIFY(fixture.app->connectionReport().startsWith(QStringLiteral("Reachable · ")));
        QVERIFY(fixture.click("Disconnect"));
        QCOMPARE(fixture.app->linkState(), LinkState::Offline);
    }

    void defaultsAreStoredAsTyped_data()
    {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("shown");
        const auto row = [](const char* name, const char* field, const char* typed, const char* key,
                            const char* stored, const char* shown) {
            QTest::newRow(name) << QByteArray(field) << QString::fromUtf8(typed) << QString::fromUtf8(key)
                                << QString::fromUtf8(stored) << QString::fromUtf8(shown);
        };
        row("above the range", "Temperature", "9", "varnel.temperature", "9", "2");
        row("decimal comma", "Temperature", "0,4", "varnel.temperature", "0.4", "0.4");
        row("no number", "Temperature", "warm", "varnel.temperature", "", "0.7");
        row("below the range", "Context length", "100", "varnel.context", "100", "512");
        row("blank", "Keep-alive", "  ", "varnel.keepAlive", "  ", "5m");
        row("a word of the server's", "Keep-alive", "-1", "varnel.keepAlive", "-1", "-1");
        row("a model", "Default model", "tiny:1b", "varnel.defaultModel", "tiny:1b", "tiny:1b");
    }
    void defaultsAreStoredAsTyped()
    {
        QFETCH(QByteArray, field);
        QFETCH(QString, typed);
        QFETCH(QString, key);
        SheetFixture fixture;
        fixture.open(Qt::Key_Comma);
        QVERIFY(fixture.click("Models"));
        QVERIFY(fixture.fill(field.constData(), typed));
        fixture.press(Qt::Key_Return);
        const QSettings stored(fixture.profile.folder.filePath(QStringLiteral("preferences.ini")),
                               QSettings::IniFormat);
        QTEST(stored.value(key).toString(), "stored");
        QTEST(fixture.valueOf(field.constData()), "shown");
    }

    void keysAreSavedReplacedAndRemoved()
    {
        QSemaphore gate; // outlives whoever waits at it
        SheetFixture fixture;
        fixture.profile.environment[QByteArrayLiteral("OPENAI_API_KEY")] = "from-environment";
        fixture.profile.secrets->items[QStringLiteral("tavrin.search.brave")] = "theirs";
        fixture.open(Qt::Key_Comma);
        QVERIFY(fixture.click("Providers"));
        QVERIFY(fixture.shows("Environment variable OPENAI_API_KEY"));
        QVERIFY(fixture.shows("Using Tavrin’s Brave key\nKeychain · tavrin.search.brave"));
        QVERIFY(!fixture.isEnabled("Remove the Brave Search key"));

        const auto& items = fixture.profile.secrets->items;
        const QString account = QStringLiteral("GOOGLE_GEMINI_API_KEY");
        QVERIFY(fixture.fill("Gemini key", QStringLiteral(" abc ")));
        fixture.press(Qt::Key_Return);
        QCOMPARE(fixture.valueOf("Gemini key"), QString());
        QVERIFY(fixture.shows("Keychain · GOOGLE_GEMINI_API_KEY"));
        QCOMPARE(items[account], QByteArray("abc"));
        QVERIFY(fixture.app->credentialRevision() > 0);

        fixture.profile.secrets->failingAdditions = 1;
        QVERIFY(fixture.fill("Gemini key", QStringLiteral("def")));
        QVERIFY(fixture.click("Save the Gemini key"));
        QVERIFY(fixture.shows("A key could not be saved to the Keychain."));
        QCOMPARE(items[account], QByteArray("abc")); // the old one is back

        fixture.profile.secrets->gate = &gate;
        QVERIFY(fixture.fill("Gemini key", QStringLiteral("ghi")));
        fixture.press(Qt::Key_Return);
        QVERIFY(fixture.fill("OpenAI key", QStringLiteral("jkl")));
        fixture.press(Qt::Key_Return); // nothing can be saved while the keyring is at work
        QVERIFY(!fixture.valueOf("OpenAI key").isEmpty());
        gate.release(1000);
        QVERIFY(waitUntil([&] { return items[account] == QByteArray("ghi"); }));
        QVERIFY(fixture.click("Remove the Gemini key"));
        QVERIFY(waitUntil([&] { return !items.contains(account); }));
        QVERIFY(waitUntil([&] { return !fixture.isEnabled("Remove the Gemini key"); }));
    }

    void aProvidersModelIsTakenOffTheMenus()
    {
        SheetFixture fixture;
        fixture.open(Qt::Key_Comma);
        QVERIFY(fixture.click("Providers"));
        QVERIFY(fixture.click("Remote passthrough"));
        QVERIFY(fixture.app->passthroughEnabled());
        // By keyboard, which brings what it reaches into view.
        QVERIFY(fixture.reach("gpt-4o"));
        fixture.press(Qt::Key_Space);
        QCOMPARE(fixture.app->disabledProviderModels(), std::set<QString>{QStringLiteral("openai\ngpt-4o")});
        const QRect place = fixture.find(QStringLiteral("gpt-4o"))->rect();
        QVERIFY(QRect(fixture.window->position(), fixture.window->size()).contains(place));
        fixture.press(Qt::Key_Return);
        QVERIFY(fixture.app->disabledProviderModels().empty());
    }

    void aPasswordIsSavedAsItIs()
    {
        SheetFixture fixture;
        fixture.open(Qt::Key_Comma);
        QVERIFY(fixture.click("SSH tunnel"));
        QVERIFY(fixture.fill("Password", QStringLiteral("  two words ")));
        fixture.press(Qt::Key_Return);
        QCOMPARE(fixture.valueOf("Password"), QString());
        const auto& items = fixture.profile.secrets->items;
        const QString account = QStringLiteral("varnel.ssh.password");
        QVERIFY(fixture.shows("Saved in Keychain"));
        QCOMPARE(items[account], QByteArray("  two words "));
        QVERIFY(fixture.click("Clear"));
        QVERIFY(waitUntil([&] { return !items.contains(account); }));
    }

    void aTunnelIsOpenedFromTheSettings()
    {
        if (!SshServer::isInstalled())
            QSKIP("openssh-server is not installed; scripts/setup installs it");
        SheetFixture fixture;
        SshClient client;
        const SshServer server(client);
        client.trust(server);
        client.addHost(QStringLiteral("gpu-box"), server);
        fixture.profile.programs = {.ssh = client.program(), .own = QStringLiteral("/bin/true")};
        fixture.open(Qt::Key_Comma);
        QVERIFY(fixture.click("SSH tunnel"));
        QVERIFY(fixture.fill("Host", QStringLiteral("gpu-box")));
        QVERIFY(fixture.fill("User", server.user()));
        QVERIFY(fixture.fill("Local port", QString::number(freePort())));
        QVERIFY(fixture.fill("Remote bind", QStringLiteral("127.0.0.1:%1").arg(fixture.host.port())));
        // ssh lives by the real time, so the program has to.
        QElapsedTimer passed;
        passed.start();
        qint64 told = 0;
        QVERIFY(fixture.reach("Connect"));
        fixture.press(Qt::Key_Return);
        QVERIFY2(waitUntil(
                     [&] {
                         // Counted from the start: what is below a millisecond adds up.
                         const qint64 now = passed.elapsed();
                         fixture.clock.advance(std::chrono::milliseconds(now - told));
                         told = now;
                         return fixture.app->linkState() == LinkState::Connected;
                     },
                     20s),
                 qPrintable(fixture.app->connectionDetail()));
        QVERIFY(fixture.app->tunnelIsUp());
        fixture.press(Qt::Key_Escape);
        fixture.app->setDraft(QStringLiteral("Through the tunnel"));
        fixture.app->send();
        QVERIFY(waitUntil([&] { return !fixture.app->isBusy(); }));
        QVERIFY(!fixture.app->failure());
    }

    void theFirstRunGoesOnWhereItWasLeft()
    {
        SheetFixture fixture(true);
        fixture.open();
        QVERIFY(fixture.shows("Step 1 of 4"));
        fixture.press(Qt::Key_Return); // Next is where the keyboard is
        QVERIFY(waitUntil([&] { return fixture.app->linkState() == LinkState::Connected; }));
        fixture.press(Qt::Key_Escape);
        QVERIFY(!fixture.profile.preferences.onboardingComplete());
        fixture.press(Qt::Key_Comma, Qt::ControlModifier);
        QVERIFY(fixture.click("Set up again…"));
        QVERIFY(fixture.shows("Step 2 of 4"));
        fixture.screens.reset();
        fixture.app.reset();
        fixture.open(); // the next start
        QVERIFY(fixture.shows("Step 2 of 4"));
        QVERIFY(waitUntil([&] { return fixture.app->linkState() == LinkState::Connected; }));
        QVERIFY(fixture.click("Next"));
        QVERIFY(fixture.click("practice-thinking:14b"));
        QCOMPARE(fixture.app->defaultModel(), QStringLiteral("practice-thinking:14b"));
        QVERIFY(fixture.click("Next"));
        QVERIFY(fixture.click("Start chatting"));
        QVERIFY(fixture.profile.preferences.onboardingComplete());
    }

    void modelsArePulledAndRemoved()
    {
        SheetFixture fixture;
        fixture.open(Qt::Key_M);
        const auto has = [&](const char* name) {
            const auto& models = fixture.app->installedModels();
            return std::any_of(models.begin(), models.end(), [name](const OllamaModel& model) {
                return model.name == QLatin1String(name);
            });
        };
        QVERIFY(waitUntil([&] { return fixture.focusName() == QStringLiteral("Search the model library"); }));
        for (const char letter : QByteArrayLiteral("reader"))
            QTest::keyClick(fixture.window, letter);
        fixture.press(Qt::Key_Return);
        QVERIFY(fixture.click("practice-reader:7b"));
        fixture.press(Qt::Key_Return);
        QVERIFY(fixture.app->isPulling());
        fixture.press(Qt::Key_Escape); // it goes on
        QVERIFY(waitUntil([&] { return has("practice-reader:7b"); }));

        fixture.app->chooseDefaultModel(QStringLiteral("practice-chat:70b"));
        fixture.press(Qt::Key_M, Qt::ControlModifier);
        QVERIFY(fixture.click("practice-chat:70b"));
        fixture.press(Qt::Key_Delete);
        QVERIFY(waitUntil([&] { return fixture.focusName() == QStringLiteral("Keep"); }));
        fixture.press(Qt::Key_Return);
        QVERIFY(waitUntil([&] { return fixture.focusName() == QStringLiteral("practice-chat:70b"); }));
        QVERIFY(has("practice-chat:70b"));
        fixture.press(Qt::Key_Delete);
        QVERIFY(waitUntil([&] { return fixture.focusName() == QStringLiteral("Keep"); }));
        fixture.press(Qt::Key_Tab);
        fixture.press(Qt::Key_Return);
        QVERIFY(waitUntil([&] { return !has("practice-chat:70b"); }));
        QCOMPARE(fixture.app->defaultModel(), QStringLiteral("qwen2.5:14b"));
    }

    void aBackupIsRestored()
    {
        SheetFixture fixture;
        fixture.open(Qt::Key_Comma);
        fixture.app->rename(fixture.app->selection(), QStringLiteral("As it was"));
        QVERIFY(fixture.click("Files"));
        const auto& backups = fixture.part<BackupListModel>("BackupListModel");
        static_cast<void>(fixture.app->planProjectFiles({})); // which says something else in the status
        QCOMPARE(backups.report(), QString());
        QVERIFY(fixture.click("Back up now"));
        QVERIFY(
            waitUntil([&] { return fixture.app->statusMessage().startsWith(QStringLiteral("Backup ")); }));
        QCOMPARE(backups.report(), fixture.app->statusMessage());
        fixture.clock.advance(1min);
        fixture.app->rename(fixture.app->selection(), QStringLiteral("Changed"));
        QAccessibleInterface* restore = nullptr;
        QVERIFY(waitUntil([&] {
            for (QAccessibleInterface* const item : fixture.items()) {
                if (item->text(QAccessible::Name).startsWith(QStringLiteral("Restore the backup of ")))
                    restore = item;
            }
            return restore != nullptr;
        }));
        QVERIFY(fixture.click(restore->text(QAccessible::Name).toUtf8().constData()));
        QVERIFY(fixture.click("Restore"));
        QVERIFY(waitUntil([&] { return fixture.app->selectedTitle() == QStringLiteral("As it was"); }));
    }

    void everySheetIsNamedAndKeepsTheKeyboard_data()
    {
        QTest::addColumn<bool>("mirrored");
        QTest::newRow("left to right") << false;
        QTest::newRow("right to left, large") << true;
    }
    void everySheetIsNamedAndKeepsTheKeyboard()
    {
        QFETCH(bool, mirrored);
        QGuiApplication::setLayoutDirection(mirrored ? Qt::RightToLeft : Qt::LeftToRight);
        SheetFixture fixture;
        fixture.open();
        fixture.window->resize(920, 560);
        for (int i = 0; mirrored && i < 3; ++i)
            fixture.press(Qt::Key_Plus, Qt::ControlModifier);
        for (const char* const page : {"Connection", "Models", "Providers", "Files", "About", ""}) {
            const bool isPage = *page != '\0';
            fixture.press(isPage ? Qt::Key_Comma : Qt::Key_M, Qt::ControlModifier);
            if (isPage)
                QVERIFY(fixture.click(page));
            for (int i = 0; i < 60; ++i) {
                fixture.press(Qt::Key_Tab);
                const QString name = fixture.focusName();
                const char* const kind = fixture.window->activeFocusItem()->metaObject()->className();
                QVERIFY2(!name.isEmpty() && name != QStringLiteral("Message"), kind);
            }
            fixture.press(Qt::Key_Escape);
            QVERIFY(waitUntil([&] { return fixture.focusName() == QStringLiteral("Message"); }));
        }
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    }
};

QTEST_MAIN(SettingsTest)
#include "SettingsTest.moc"
