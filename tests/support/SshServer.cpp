#include "support/SshServer.h"

#include "support/Await.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QTcpServer>

#include <csignal>
#include <grp.h>
#include <pwd.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varnel::test {

namespace {

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString& path, const QByteArray& text, QIODevice::OpenMode mode = QIODevice::WriteOnly)
{
    QFile file(path);
    if (!file.open(mode) || file.write(text) != text.size())
        throw std::runtime_error("cannot write " + path.toStdString());
}

void makeKey(const QString& path)
{
    QProcess process;
    process.start(QStringLiteral("ssh-keygen"),
                  {QStringLiteral("-q"), QStringLiteral("-t"), QStringLiteral("ed25519"),
                   QStringLiteral("-N"), QString(), QStringLiteral("-f"), path});
    if (!waitUntil([&process] { return process.state() == QProcess::NotRunning; }) || process.exitCode() != 0)
        throw std::runtime_error("ssh-keygen made no key");
}

/// The type and the key, without the comment.
QByteArray keyOf(const QString& path)
{
    return contents(path).split(' ').mid(0, 2).join(' ').trimmed();
}

/// Whom the server runs as, which is the only one it can let in.
const passwd& serverUser()
{
    return *(::getuid() == 0 ? ::getpwnam("nobody") : ::getpwuid(::getuid()));
}

} // namespace

QList<qint64> descendantsOf(qint64 pid)
{
    QHash<qint64, QList<qint64>> children;
    for (const QString& name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        const QByteArray line = contents(QStringLiteral("/proc/%1/stat").arg(name));
        const QList<QByteArray> figures = line.mid(line.lastIndexOf(')') + 2).split(' ');
        if (name[0].isDigit() && figures.size() > 1)
            children[figures[1].toLongLong()].append(name.toLongLong());
    }
    QList<qint64> found = children.value(pid);
    for (qsizetype i = 0; i < found.size(); ++i)
        found += children.value(found[i]);
    return found;
}

SshClient::SshClient()
{
    makeKey(m_folder.filePath(QStringLiteral("key")));
    write(program(), "#!/bin/sh\nexec /usr/bin/ssh -F '" + configuration().toUtf8() + "' \"$@\"\n");
    QFile(program()).setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    append(QStringLiteral("known_hosts"), {});
}

QString SshClient::program() const
{
    return m_folder.filePath(QStringLiteral("ssh"));
}

QString SshClient::configuration() const
{
    return m_folder.filePath(QStringLiteral("config"));
}

QByteArray SshClient::publicKey() const
{
    return keyOf(m_folder.filePath(QStringLiteral("key.pub")));
}

void SshClient::addHost(const QString& name, const SshServer& server, const QByteArray& lines)
{
    addHost(name, server.port(), lines + "\nUser " + server.user().toUtf8());
}

void SshClient::addHost(const QString& name, int port, const QByteArray& lines)
{
    const QByteArray folder = m_folder.path().toUtf8();
    append(QStringLiteral("config"), "Host " + name.toUtf8() + "\n" + lines + "\nHostName 127.0.0.1\nPort " +
                                         QByteArray::number(port) + "\nIdentityFile " + folder +
                                         "/key\nIdentitiesOnly yes\nIdentityAgent none\nUserKnownHostsFile " +
                                         folder + "/known_hosts\nGlobalKnownHostsFile none\n");
}

void SshClient::trust(const SshServer& server)
{
    append(QStringLiteral("known_hosts"),
           "[127.0.0.1]:" + QByteArray::number(server.port()) + ' ' + server.hostKey() + '\n');
}

void SshClient::trustWrongly(const SshServer& server)
{
    append(QStringLiteral("known_hosts"),
           "[127.0.0.1]:" + QByteArray::number(server.port()) + ' ' + publicKey() + '\n');
}

void SshClient::append(const QString& name, const QByteArray& text)
{
    write(m_folder.filePath(name), text, QIODevice::Append);
}

SshServer::SshServer(const SshClient& client, const QByteArray& settings)
    : m_user(QString::fromLocal8Bit(serverUser().pw_name))
{
    // The folder is the server's, whoever it runs as.
    ::chmod(QFile::encodeName(m_folder.path()).constData(), S_IRWXU | S_IXGRP | S_IXOTH);
    makeKey(m_folder.filePath(QStringLiteral("host_key")));
    addFile(QStringLiteral("host_key"), contents(m_folder.filePath(QStringLiteral("host_key"))));
    addFile(QStringLiteral("authorized_keys"), client.publicKey() + '\n');
    start(settings);
}

SshServer::~SshServer()
{
    setFrozen(false);
    const QList<qint64> connections = descendantsOf(m_daemon.processId());
    m_daemon.kill();
    for (const qint64 pid : connections)
        ::kill(static_cast<pid_t>(pid), SIGKILL);
    waitUntil([this] { return m_daemon.state() == QProcess::NotRunning; });
}

void SshServer::start(const QByteArray& settings)
{
    QTcpServer portFinder;
    portFinder.listen(QHostAddress::LocalHost);
    m_port = portFinder.serverPort();
    portFinder.close();
    const QByteArray folder = m_folder.path().toUtf8();
    const QString configuration =
        addFile(QStringLiteral("sshd_config"),
                settings + "\nListenAddress 127.0.0.1:" + QByteArray::number(m_port) + "\nHostKey " + folder +
                    "/host_key\nAuthorizedKeysFile " + folder +
                    "/authorized_keys\nPidFile none\nUsePAM no\nStrictModes no\nPasswordAuthentication yes\n"
                    "KbdInteractiveAuthentication no\nMaxStartups 100\n");
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(VARNEL_SHADOW_PASSWORD));
    m_daemon.setProcessEnvironment(environment);
    m_daemon.setStandardErrorFile(m_folder.filePath(QStringLiteral("log")));
    m_daemon.setChildProcessModifier([&user = serverUser()] {
        if (::getuid() == 0 &&
            (::setgroups(0, nullptr) != 0 || ::setgid(user.pw_gid) != 0 || ::setuid(user.pw_uid) != 0))
            ::_exit(127);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    });
    // In the foreground, with its log on standard error, and without starting itself anew for each
    // connection.
    m_daemon.start(QStringLiteral("/usr/sbin/sshd"),
                   {QStringLiteral("-D"), QStringLiteral("-e"), QStringLiteral("-r"), QStringLiteral("-f"),
                    configuration});
    const bool listens = waitUntil(
        [this] { return log().contains("Server listening") || m_daemon.state() == QProcess::NotRunning; });
    if (!listens || m_daemon.state() == QProcess::NotRunning)
        throw std::runtime_error("sshd did not start: " + log().toStdString());
}

QString SshServer::password()
{
    return QStringLiteral("sentinel  pässword ");
}

QByteArray SshServer::hostKey() const
{
    return keyOf(m_folder.filePath(QStringLiteral("host_key.pub")));
}

QByteArray SshServer::log() const
{
    return contents(m_folder.filePath(QStringLiteral("log")));
}

QString SshServer::addFile(const QString& name, const QByteArray& text) const
{
    const QString path = m_folder.filePath(name);
    write(path, text);
    const QByteArray encoded = QFile::encodeName(path);
    if (::getuid() == 0 && ::chown(encoded.constData(), serverUser().pw_uid, serverUser().pw_gid) != 0)
        throw std::runtime_error("cannot hand over " + path.toStdString());
    return path;
}

void SshServer::dropConnections() const
{
    for (const qint64 pid : descendantsOf(m_daemon.processId()))
        ::kill(static_cast<pid_t>(pid), SIGTERM);
}

void SshServer::setFrozen(bool frozen) const
{
    QList<qint64> processes = descendantsOf(m_daemon.processId());
    processes.prepend(m_daemon.processId());
    for (const qint64 pid : processes)
        ::kill(static_cast<pid_t>(pid), frozen ? SIGSTOP : SIGCONT);
}

bool SshServer::isInstalled()
{
    return QFile::exists(QStringLiteral("/usr/sbin/sshd")) && QFile::exists(QStringLiteral("/usr/bin/ssh"));
}

} // namespace varnel::test
