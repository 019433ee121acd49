#include "ui/WindowApplication.h"

#include "app/DiagnosticsLog.h"
#include "base/Clock.h"
#include "base/Error.h"
#include "base/Worker.h"
#include "store/DataFolderLock.h"
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
#include <QThread>

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

/// Asks the instance that holds the data folder to show its window. One that has only just begun may not
/// listen yet.
bool raiseOther(const QString& dataFolder, const QByteArray& token)
{
    constexpr int attempts = 40;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        if (InstanceChannel::askToRaise(dataFolder, token))
            return true;
        QThread::msleep(50);
    }
    return false;
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

/// The right to write into the data folder.
struct FolderHold
{
    std::optional<DataFolderLock> lock;
    bool isOthers = false;
};

/// Where locks cannot be kept at all, the window opens without one.
FolderHold holdFolder(const QString& dataFolder, const DiagnosticsLog& log)
{
    try {
        FolderHold hold{.lock = DataFolderLock::take(dataFolder)};
        hold.isOthers = !hold.lock;
        return hold;
    } catch (const Error& error) {
        log.log(error.message());
        return {};
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
    const QuitSignals quitSignals;
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Varnel"));
    QGuiApplication::setDesktopFileName(QStringLiteral("app.varnel"));
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/varnel/icon-128.png")));
    registerFont();

    Preferences preferences;
    const SystemClock clock;
    const DiagnosticsLog log(DiagnosticsLog::defaultFolder(), clock);
    const LibraryLocation location = resolveLocation(systemStorageFolders());
    const FolderHold hold = holdFolder(location.folder(), log);
    if (hold.isOthers) {
        if (raiseOther(location.folder(), token))
            return EXIT_SUCCESS;
        qWarning("Another Varnel holds %s and does not answer.", qUtf8Printable(location.folder()));
        return EXIT_FAILURE;
    }
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
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &app, &AppModel::shutDown);
    const std::unique_ptr<InstanceChannel> channel = listen(location.folder(), *window, log);
    QObject::connect(&screens.notices(), &ReplyNotices::raiseRequested, window,
                     [window](const QByteArray& token) { raise(*window, token); });
    reportFirstFrame(*window);
    screens.show(*window);
    app.checkAtStart();
    return QGuiApplication::exec();
}

} // namespace varnel
