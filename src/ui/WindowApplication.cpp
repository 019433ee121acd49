#include "ui/WindowApplication.h"

#include "app/DiagnosticsLog.h"
#include "base/Clock.h"
#include "base/Error.h"
#include "base/Worker.h"
#include "store/InstanceChannel.h"
#include "store/Preferences.h"
#include "store/StorageLocation.h"
#include "ui/GraphicsDevice.h"
#include "ui/QtImageConverter.h"
#include "ui/QuitSignals.h"
#include "ui/WindowScreens.h"

#include <QFileInfo>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QIcon>
#include <QLoggingCategory>

#include <csignal>

namespace varnel {

namespace {

Q_LOGGING_CATEGORY(startLog, "varnel.start", QtWarningMsg)

void chooseRendering()
{
    if (!qEnvironmentVariableIsSet("QT_QUICK_BACKEND") && !hasGraphicsDevice())
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QQuickWindow::setTextRenderType(QQuickWindow::NativeTextRendering);
}

/// The face of the greeting. Without it the greeting is set in the system's.
void registerFont()
{
    const QStringList places = {
        QCoreApplication::applicationDirPath() + QStringLiteral("/../share/varnel/Fonts/EBGaramond.ttf"),
        // In the bundle of macOS.
        QCoreApplication::applicationDirPath() + QStringLiteral("/../Resources/Fonts/EBGaramond.ttf"),
        QCoreApplication::applicationDirPath() + QStringLiteral("/../Resources/EBGaramond.ttf"),
        QStringLiteral("/usr/share/fonts/opentype/ebgaramond/EBGaramond12-Regular.otf"),
    };
    for (const QString& place : places) {
        if (QFileInfo::exists(place) && QFontDatabase::addApplicationFont(place) >= 0)
            return;
    }
}

void reportFirstFrame(QQuickWindow& window)
{
    if (!startLog().isDebugEnabled())
        return;
    // The analyser does not know that types of connections are joined like flags.
    const auto once = static_cast<Qt::ConnectionType>( // NOLINT(clang-analyzer-optin.core.EnumCastOutOfRange)
        Qt::DirectConnection | Qt::SingleShotConnection);
    QObject::connect(
        &window, &QQuickWindow::frameSwapped, &window, [] { qCDebug(startLog, "first frame"); }, once);
}

/// What a second instance hands to the first one, so that the desktop lets its window come to the front.
QByteArray activationToken()
{
    const QByteArray wayland = qgetenv("XDG_ACTIVATION_TOKEN");
    return wayland.isEmpty() ? qgetenv("DESKTOP_STARTUP_ID") : wayland;
}

void raise(QQuickWindow& window, const QByteArray& token)
{
    // Qt takes the token from the environment when the window asks to become active.
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token);
    window.setVisible(true);
    if (window.windowStates().testFlag(Qt::WindowMinimized))
        window.setWindowStates(window.windowStates() & ~Qt::WindowMinimized);
    window.raise();
    window.requestActivate();
}

/// Where locks cannot be kept at all, the window opens without one.
InstanceStart startInstance(const QString& dataFolder, const QByteArray& token, const DiagnosticsLog& log)
{
    // Longer than an instance takes that is ending: it gives ssh its time and writes what is not saved.
    constexpr std::chrono::seconds patience(20);
    try {
        return takeOrRaise(dataFolder, token, patience);
    } catch (const Error& error) {
        log.log(error.message());
        return {.lock = std::nullopt, .other = OtherInstance::None};
    }
}

std::unique_ptr<InstanceChannel> listen(const QString& dataFolder, QQuickWindow& window,
                                        const DiagnosticsLog& log)
{
    try {
        return std::make_unique<InstanceChannel>(
            dataFolder, [&window](const QByteArray& token) { raise(window, token); });
    } catch (const Error& error) {
        log.log(error.message());
        return nullptr;
    }
}

} // namespace

int runWindowApplication(int argc, char** argv)
{
    const QByteArray token = activationToken();

    chooseRendering();
    QGuiApplication application(argc, argv);
    // A second start may give up before it is answered; Qt gives child processes the system's own way back.
    std::signal(SIGPIPE, SIG_IGN);
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Varnel"));
    QGuiApplication::setDesktopFileName(QStringLiteral("app.varnel"));
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/varnel/icon-128.png")));
    registerFont();

    const SystemClock clock;
    const DiagnosticsLog log(DiagnosticsLog::defaultFolder(), clock);
    const LibraryLocation location = resolveLocation(systemStorageFolders());
    const InstanceStart start = startInstance(location.folder(), token, log);
    if (start.other == OtherInstance::Raised)
        return EXIT_SUCCESS;
    if (start.other == OtherInstance::Silent) {
        qWarning("Another Varnel holds %s and does not answer.", qUtf8Printable(location.folder()));
        return EXIT_FAILURE;
    }
    // Not before: while an other instance is waited for, the system's own way ends this one at once.
    const QuitSignals quitSignals;
    // Not before either: an instance that was ending may have changed them.
    Preferences preferences;
    Worker imageWorker;
    QtImageConverter images(imageWorker);
    AppModel app({.preferences = preferences,
                  .clock = clock,
                  .secrets = systemSecretStore(),
                  .log = log,
                  .location = location,
                  .images = &images});
    WindowScreens screens(app, clock, windowStateFile());
    QQuickWindow* const window = screens.load();
    if (!window)
        return EXIT_FAILURE;
    std::unique_ptr<InstanceChannel> channel = listen(location.folder(), *window, log);
    // First of all: who starts from now on must not be told that this window comes to the front.
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &app, [&channel] { channel.reset(); });
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &app, &AppModel::shutDown);
    QObject::connect(&screens.notices(), &ReplyNotices::raiseRequested, window,
                     [window](const QByteArray& token) { raise(*window, token); });
    reportFirstFrame(*window);
    screens.show(*window);
    app.checkAtStart();
    return QGuiApplication::exec();
}

} // namespace varnel
