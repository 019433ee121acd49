#include "support/Keyring.h"

#include "support/Await.h"

#include <QFile>
#include <QProcessEnvironment>
#include <QStandardPaths>

#include <csignal>
#include <stdexcept>

namespace varnel::test {

namespace {

constexpr const char* addressVariable = "DBUS_SESSION_BUS_ADDRESS";

void endProcess(QProcess& process)
{
    if (process.state() == QProcess::NotRunning)
        return;
    process.kill();
    process.waitForFinished();
}

QByteArray output(QProcess& process, const QString& program, const QStringList& arguments,
                  const QByteArray& input = {})
{
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(10000))
        throw std::runtime_error(program.toStdString() + " did not end in time");
    return process.exitCode() == 0 ? process.readAllStandardOutput() : QByteArray();
}

} // namespace

EnvironmentVariable::EnvironmentVariable(const char* name, const QByteArray& value)
    : m_name(name)
    , m_previous(qgetenv(name))
    , m_wasSet(qEnvironmentVariableIsSet(name))
{
    qputenv(name, value);
}

EnvironmentVariable::~EnvironmentVariable()
{
    if (m_wasSet)
        qputenv(m_name, m_previous);
    else
        qunsetenv(m_name);
}

PrivateBus::PrivateBus()
{
    QFile configuration(m_folder.filePath(QStringLiteral("bus.conf")));
    if (!configuration.open(QIODevice::WriteOnly))
        throw std::runtime_error("no configuration for the private bus");
    configuration.write(
        "<busconfig><type>session</type><listen>unix:dir=" + m_folder.path().toUtf8() +
        "</listen><policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
        "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>");
    configuration.close();
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--nofork"), QStringLiteral("--print-address=1"),
                    QStringLiteral("--config-file=") + configuration.fileName()});
    while (!m_daemon.canReadLine()) {
        if (!m_daemon.waitForReadyRead(10000))
            throw std::runtime_error("the private bus did not start");
    }
    m_address.emplace(addressVariable, m_daemon.readLine().trimmed());
}

PrivateBus::~PrivateBus()
{
    end();
}

void PrivateBus::end()
{
    endProcess(m_daemon);
}

QByteArray PrivateBus::call(const QString& service, const QString& path, const QString& method,
                            const QStringList& arguments) const
{
    QProcess process;
    return output(process, QStringLiteral("dbus-send"),
                  QStringList{QStringLiteral("--session"), QStringLiteral("--print-reply"),
                              QStringLiteral("--dest=") + service, path, method} +
                      arguments);
}

QProcessEnvironment PrivateBus::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"HOME", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
        environment.insert(QLatin1String(name), m_folder.path());
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    return environment;
}

Keyring::Keyring()
{
    m_daemon.setProcessEnvironment(m_bus.environment());
    m_daemon.setStandardErrorFile(QProcess::nullDevice());
    m_daemon.start(
        QStringLiteral("gnome-keyring-daemon"),
        {QStringLiteral("--foreground"), QStringLiteral("--unlock"), QStringLiteral("--components=secrets")});
    m_daemon.write("password of the tests");
    m_daemon.closeWriteChannel();
    const bool ready = waitUntil([this] {
        return m_bus
            .call(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
                  QStringLiteral("org.freedesktop.DBus.NameHasOwner"),
                  {QStringLiteral("string:org.freedesktop.secrets")})
            .contains("true");
    });
    if (!ready)
        throw std::runtime_error("the private keyring did not start");
}

Keyring::~Keyring()
{
    endProcess(m_daemon);
}

void Keyring::lock()
{
    const QByteArray reply =
        m_bus.call(QStringLiteral("org.freedesktop.secrets"), QStringLiteral("/org/freedesktop/secrets"),
                   QStringLiteral("org.freedesktop.Secret.Service.Lock"),
                   {QStringLiteral("array:objpath:/org/freedesktop/secrets/collection/login")});
    if (!reply.contains("/org/freedesktop/secrets/collection/login"))
        throw std::runtime_error("the private keyring was not locked");
}

void Keyring::setFrozen(bool frozen)
{
    ::kill(static_cast<pid_t>(m_daemon.processId()), frozen ? SIGSTOP : SIGCONT);
}

void Keyring::endBus()
{
    m_bus.end();
}

QByteArray Keyring::secretTool(const QStringList& arguments, const QByteArray& input) const
{
    QProcess process;
    return output(process, QStringLiteral("secret-tool"), arguments, input);
}

bool keyringInstalled()
{
    for (const char* program : {"dbus-daemon", "dbus-send", "gnome-keyring-daemon", "secret-tool"}) {
        if (QStandardPaths::findExecutable(QLatin1String(program)).isEmpty())
            return false;
    }
    return true;
}

} // namespace varnel::test
