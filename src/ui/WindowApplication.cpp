#include "ui/WindowApplication.h"

#include "app/DiagnosticsLog.h"
#include "base/Clock.h"
#include "store/Preferences.h"
#include "ui/GraphicsDevice.h"
#include "ui/QuitSignals.h"
#include "ui/WindowScreens.h"

#include <QFileInfo>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QIcon>
#include <QLoggingCategory>

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
    QObject::connect(
        &window, &QQuickWindow::frameSwapped, &window, [] { qCDebug(startLog, "first frame"); },
        static_cast<Qt::ConnectionType>(Qt::DirectConnection | Qt::SingleShotConnection));
}

} // namespace

int runWindowApplication(int argc, char** argv)
{
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
    AppModel app({.preferences = preferences, .clock = clock, .secrets = systemSecretStore(), .log = log});
    WindowScreens screens(app, clock, windowStateFile());
    QQuickWindow* const window = screens.load();
    if (!window)
        return EXIT_FAILURE;
    QObject::connect(&application, &QCoreApplication::aboutToQuit, &app, &AppModel::shutDown);
    reportFirstFrame(*window);
    screens.show(*window);
    app.checkAtStart();
    return QGuiApplication::exec();
}

} // namespace varnel
