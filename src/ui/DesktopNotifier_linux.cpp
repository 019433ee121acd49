// The notification service of the desktop, over the session bus.
#include "ui/DesktopNotifier.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <map>
#include <optional>
#include <utility>

namespace varnel {

namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");

} // namespace

class BusNotifications : public QObject
{
    Q_OBJECT

public:
    explicit BusNotifications(DesktopNotifier& notifier)
        : QObject(&notifier)
        , m_notifier(notifier)
    {
        QDBusConnection bus = QDBusConnection::sessionBus();
        bus.connect(service, path, service, QStringLiteral("ActionInvoked"), this,
                    SLOT(takeAction(uint, QString)));
        bus.connect(service, path, service, QStringLiteral("ActivationToken"), this,
                    SLOT(takeToken(uint, QString)));
        bus.connect(service, path, service, QStringLiteral("NotificationClosed"), this,
                    SLOT(takeClosed(uint, uint)));
    }

    void show(const QUuid& about, const QString& title, const QString& text)
    {
        const auto shown = m_numbers.find(about);
        const uint replaced = shown == m_numbers.end() ? 0 : shown->second;
        QDBusMessage call = QDBusMessage::createMethodCall(service, path, service, QStringLiteral("Notify"));
        // "default" is the action of pressing the notification itself.
        call << QStringLiteral("Varnel") << replaced << QStringLiteral("app.varnel") << title << text
             << QStringList{QStringLiteral("default"), tr("Open")}
             << QVariantMap{{QStringLiteral("desktop-entry"), QStringLiteral("app.varnel")},
                            {QStringLiteral("category"), QStringLiteral("im.received")}}
             << -1;
        auto* const watcher =
            new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, about] {
            const QDBusPendingReply<uint> answer = *watcher;
            if (!answer.isError())
                m_numbers[about] = answer.value();
            watcher->deleteLater();
        });
    }

private Q_SLOTS:
    // Everybody on the bus hears of everybody's notifications; only numbers that were given to us count.
    void takeAction(uint number, const QString&)
    {
        if (const auto about = aboutOf(number)) {
            const QByteArray token = std::exchange(m_token, {});
            m_numbers.erase(*about);
            Q_EMIT m_notifier.activated(*about, token);
        }
    }
    void takeToken(uint number, const QString& token)
    {
        if (aboutOf(number))
            m_token = token.toUtf8();
    }
    void takeClosed(uint number, uint)
    {
        if (const auto about = aboutOf(number))
            m_numbers.erase(*about);
    }

private:
    std::optional<QUuid> aboutOf(uint number) const
    {
        for (const auto& [about, known] : m_numbers) {
            if (known == number)
                return about;
        }
        return std::nullopt;
    }

    DesktopNotifier& m_notifier;
    std::map<QUuid, uint> m_numbers;
    QByteArray m_token;
};

DesktopNotifier::DesktopNotifier(QObject* parent)
    : QObject(parent)
{}

void DesktopNotifier::show(const QUuid& about, const QString& title, const QString& text)
{
    // The bus is looked for with the first notification, not while the window opens.
    auto* notifications = findChild<BusNotifications*>(QString(), Qt::FindDirectChildrenOnly);
    if (!notifications)
        notifications = new BusNotifications(*this);
    notifications->show(about, title, text);
}

} // namespace varnel

#include "DesktopNotifier_linux.moc"
