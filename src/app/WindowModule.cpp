#include "app/WindowModule.h"

#include "app/StandardStream.h"
#include "app/SystemDisplay.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>

namespace varnel {

namespace {

int refuse(const QString& reason)
{
    StandardStream(2).write(reason + QLatin1Char('\n'));
    return 1;
}

} // namespace

int runWindow(int argc, char** argv)
{
    if (!hasDisplay())
        return refuse(QStringLiteral("Varnel found no display to open its window on. The command line works "
                                     "without one: varnel ctl"));
    QLibrary module(windowModulePath());
    using RunWindow = int (*)(int, char**);
    const auto run = reinterpret_cast<RunWindow>(module.resolve("varnel_run_window"));
    if (!run)
        return refuse(
            QStringLiteral("Varnel's window could not be loaded: %1")
                .arg(QDir::cleanPath(windowModulePath()) + QStringLiteral(": ") + module.errorString()));
    return run(argc, argv);
}

} // namespace varnel
