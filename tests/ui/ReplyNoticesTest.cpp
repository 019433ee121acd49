#include "ui/ReplyNotices.h"
#include "support/Keyring.h"
#include "ui/ModelFixture.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QSignalSpy>
#include <QTest>

using namespace varnel;
using namespace varnel::test;
using namespace std::chrono_literals;

namespace {

struct RecordedNotifier : DesktopNotifier
{
    void show(const QUuid& about, const QString& title, const QString& text) override
    {
        shown.append(title + QStringLiteral(": ") + text);
        last = about;
    }

    QStringList shown;
    QUuid last;
};

} // namespace

/// A notification service as the desktop has one.
class NotificationService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    QList<uint> replaced;
    QStringList titles;

public Q_SLOTS:
    // NOLINTNEXTLINE(readability-identifier-naming) the bus calls it so
    uint Notify(const QString&, uint replaces, const QString&, const QString& title, const QString&,
                const QStringList&, const QVariantMap&, int)
    {
        replaced.append(replaces);
        titles.append(title);
        return 41 + static_cast<uint>(titles.size());
    }
};

class ReplyNoticesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void longRepliesAreTold_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<bool>("watched");
        QTest::addColumn<QString>("model");
        QTest::addColumn<QStringList>("told");
        QTest::newRow("long, elsewhere") << 11 << false << "practice-chat:70b"
                                         << QStringList{QStringLiteral("<b>hello</b>: The reply is ready")};
        QTest::newRow("failed") << 11 << false << "practice-drop:1b"
                                << QStringList{QStringLiteral("<b>hello</b>: The reply failed")};
        QTest::newRow("short") << 10 << false << "practice-chat:70b" << QStringList();
        QTest::newRow("before the user's eyes") << 11 << true << "practice-chat:70b" << QStringList();
    }
    void longRepliesAreTold()
    {
        QFETCH(int, seconds);
        QFETCH(bool, watched);
        QFETCH(QString, model);
        ModelFixture fixture({.piece = 1ms});
        RecordedNotifier notifier;
        const ReplyNotices notices(fixture.app, fixture.clock, notifier, [&] { return watched; });
        fixture.app.chooseModel(model);
        fixture.app.setDraft(QStringLiteral("<b>hello</b>"));
        fixture.app.send();
        QVERIFY(waitUntil([&] { return fixture.app.isStreaming(); }));
        fixture.clock.advance(std::chrono::seconds(seconds));
        QVERIFY(waitUntil([&] { return !fixture.app.isBusy(); }));
        QTEST(notifier.shown, "told");
    }

    void pressingANotificationOpensItsConversation()
    {
        ModelFixture fixture;
        RecordedNotifier notifier;
        const ReplyNotices notices(fixture.app, fixture.clock, notifier, [] { return true; });
        const QSignalSpy raised(&notices, &ReplyNotices::raiseRequested);
        QVERIFY(fixture.begin(QStringLiteral("first")));
        const QUuid first = fixture.app.selection();
        QVERIFY(fixture.begin(QStringLiteral("second")));
        Q_EMIT notifier.activated(first, QByteArrayLiteral("token"));
        QCOMPARE(fixture.app.selection(), first);
        QCOMPARE(raised.count(), 1);
        Q_EMIT notifier.activated(QUuid::createUuid(), {}); // deleted meanwhile
        QCOMPARE(fixture.app.selection(), first);
    }

    void theDesktopIsToldOverTheBus()
    {
        const PrivateBus bus;
        NotificationService service;
        QDBusConnection connection = QDBusConnection::connectToBus(
            QString::fromUtf8(qgetenv("DBUS_SESSION_BUS_ADDRESS")), QStringLiteral("desktop"));
        const QString name = QStringLiteral("org.freedesktop.Notifications");
        const QString path = QStringLiteral("/org/freedesktop/Notifications");
        QVERIFY(connection.registerObject(path, &service, QDBusConnection::ExportAllSlots));
        QVERIFY(connection.registerService(name));

        DesktopNotifier notifier;
        const QSignalSpy activated(&notifier, &DesktopNotifier::activated);
        const QUuid about = QUuid::createUuid();
        notifier.show(about, QStringLiteral("one"), QStringLiteral("text"));
        QVERIFY(waitUntil([&] { return service.titles.size() == 1; }));
        const auto tell = [&](const char* signal, uint number, const QString& word) {
            QDBusMessage message = QDBusMessage::createSignal(path, name, QString::fromLatin1(signal));
            connection.send(message << number << word);
        };
        // Its number comes with the answer to the call; until then nobody's press is ours.
        QVERIFY(waitUntil([&] {
            tell("ActionInvoked", 7, QStringLiteral("default")); // somebody else's
            tell("ActivationToken", 42, QStringLiteral("token"));
            tell("ActionInvoked", 42, QStringLiteral("default"));
            return activated.count() > 0;
        }));
        QCOMPARE(activated.count(), 1);
        QCOMPARE(activated[0][0].toUuid(), about);
        QCOMPARE(activated[0][1].toByteArray(), QByteArrayLiteral("token"));

        notifier.show(about, QStringLiteral("two"), QStringLiteral("text"));
        notifier.show(QUuid::createUuid(), QStringLiteral("three"), QStringLiteral("text"));
        QVERIFY(waitUntil([&] { return service.titles.size() == 3; }));
        QCOMPARE(service.replaced, QList<uint>({0, 0, 0})); // the first one is gone with its press
    }
};

QTEST_MAIN(ReplyNoticesTest)
#include "ReplyNoticesTest.moc"
