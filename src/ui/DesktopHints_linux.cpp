// The settings portal of the desktop, over the session bus.
#include "ui/DesktopHints.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace varnel {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");

const QString appearanceSpace = QStringLiteral("org.freedesktop.appearance");
const QString colourKey = QStringLiteral("color-scheme");
const QString gnomeSpace = QStringLiteral("org.gnome.desktop.interface");
const QString animationsKey = QStringLiteral("enable-animations");

/// The portal wraps a value in a variant when it is asked, and in one less when it tells.
QVariant unwrapped(QVariant value)
{
    while (value.userType() == qMetaTypeId<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

class PortalListener : public QObject
{
    Q_OBJECT

public:
    explicit PortalListener(DesktopHints& hints)
        : QObject(&hints)
        , m_hints(hints)
    {
        QDBusConnection bus = QDBusConnection::sessionBus();
        if (!bus.isConnected()) {
            m_hints.takeDark(std::nullopt);
            return;
        }
        bus.connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                    SLOT(take(QString, QString, QDBusVariant)));
        ask(appearanceSpace, colourKey);
        ask(gnomeSpace, animationsKey);
    }

private Q_SLOTS:
    void take(const QString& space, const QString& key, const QDBusVariant& value)
    {
        const QVariant setting = unwrapped(QVariant::fromValue(value));
        if (space == appearanceSpace && key == colourKey)
            takeScheme(setting.toUInt());
        else if (space == gnomeSpace && key == animationsKey)
            m_hints.takeReducedMotion(!setting.toBool());
    }

private:
    void takeScheme(uint scheme)
    {
        constexpr uint dark = 1;
        constexpr uint light = 2;
        m_hints.takeDark(scheme == dark || scheme == light ? std::optional(scheme == dark) : std::nullopt);
    }

    void ask(const QString& space, const QString& key)
    {
        QDBusMessage question =
            QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
        question << space << key;
        auto* const watcher =
            new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, space, key] {
            const QDBusPendingReply<QDBusVariant> answer = *watcher;
            if (!answer.isError())
                take(space, key, answer.value());
            else if (space == appearanceSpace)
                m_hints.takeDark(std::nullopt);
            watcher->deleteLater();
        });
    }

    DesktopHints& m_hints;
};

void DesktopHints::listenToDesktop()
{
    new PortalListener(*this);
}

} // namespace varnel

#include "DesktopHints_linux.moc"
