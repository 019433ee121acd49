#include "app/Askpass.h"
#include "app/AskpassCaller.h"
#include "app/CommandModes.h"
#include "app/Ctl.h"
#include "app/StandardStream.h"
#include "app/WindowModule.h"
#include "base/HttpClient.h"
#include "base/SecretStore.h"
#include "base/Text.h"
#include "store/Preferences.h"
#include "store/RuntimeFolder.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace varnel {

namespace {

/// Standard error belongs to the command's own texts; Qt would add a remark about the locale, for one.
void discardMessage(QtMsgType, const QMessageLogContext&, const QString&) {}

/// Ends the event loop with the status that the command yields.
Task<void> exitWith(Task<int> command, int& status)
{
    try {
        status = co_await command;
    } catch (const std::exception& error) {
        status = 1;
        // Every failure that was foreseen has been told; what is left is standard error itself failing, or
        // memory.
        std::fprintf(stderr, "varnel: %s\n", error.what());
    }
    QCoreApplication::exit(status);
}

int runCommandLine(int argc, char** argv, QStringList arguments)
{
    qInstallMessageHandler(discardMessage);
    // A reader that goes away is noticed by the write, and a server that does must not end the process.
    std::signal(SIGPIPE, SIG_IGN);
    // Qt's own dispatcher starts faster than the one over GLib. No child process inherits the variable.
    const bool chosen = qEnvironmentVariableIsSet("QT_NO_GLIB");
    if (!chosen)
        qputenv("QT_NO_GLIB", "1");
    const QCoreApplication application(argc, argv);
    if (!chosen)
        qunsetenv("QT_NO_GLIB");

    const Environment environment = processEnvironment;
    const Preferences preferences;
    const StandardStream output(1);
    const StandardStream errors(2);
    HttpClient http;
    int status = 1;
    const Task<void> command =
        exitWith(runCtl(std::move(arguments), {environment, preferences, http, output, errors}), status);
    return command.isFinished() ? status : QCoreApplication::exec();
}

int run(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(textOf(argv[i]));

    switch (chooseMode(processEnvironment, arguments)) {
    case CommandMode::Askpass: {
        forbidInspection();
        qInstallMessageHandler(discardMessage); // what ssh's helper says ends up among what ssh says
        const std::unique_ptr<SecretStore> secrets = systemSecretStore();
        try {
            return mayAnswer(askpassCaller(), &runtimeFolder) ? runAskpass(*secrets) : 1;
        } catch (const Error&) {
            return 1; // nobody takes the answer, and there is nothing to say
        }
    }
    case CommandMode::Ctl:
        return runCommandLine(argc, argv, arguments.mid(1));
    case CommandMode::TestHost: {
        const QCoreApplication application(argc, argv);
        return QCoreApplication::exec();
    }
    case CommandMode::Window:
        break;
    }
    return runWindow(argc, argv);
}

} // namespace

} // namespace varnel

int main(int argc, char** argv)
{
    varnel::occupyClosedStreams();
    return varnel::run(argc, argv);
}
