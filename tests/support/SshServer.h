#pragma once

#include <QByteArray>
#include <QList>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace varnel::test {

/// Every process that descends from this one, at whatever distance, its parents before it.
QList<qint64> descendantsOf(qint64 pid);

class SshServer;

/// The real ssh with a configuration, a key and known hosts of its own in a temporary folder.
class SshClient
{
public:
    SshClient();

    /// What stands in for the ssh program: a script that becomes it, with the configuration in front.
    QString program() const;
    /// The file that program() has ssh read.
    QString configuration() const;
    QByteArray publicKey() const;
    /// Adds a host to the configuration, with further lines as they stand there.
    void addHost(const QString& name, const SshServer& server, const QByteArray& lines = {});
    void addHost(const QString& name, int port, const QByteArray& lines = {});
    /// Makes the server's host key known, or claims that it has another one.
    void trust(const SshServer& server);
    void trustWrongly(const SshServer& server);

private:
    void append(const QString& name, const QByteArray& text);

    QTemporaryDir m_folder;
};

/// A real ssh server on a free port of 127.0.0.1. It lets one user in, with the key of a client or with the
/// password of the tests. When started by root it runs as "nobody", so that nothing outside its folder is
/// needed.
class SshServer
{
public:
    /// Throws std::runtime_error if it does not start.
    /// @param settings further lines of its configuration; the first mention of a keyword counts.
    explicit SshServer(const SshClient& client, const QByteArray& settings = {});
    SshServer(const SshServer&) = delete;
    SshServer& operator=(const SshServer&) = delete;
    SshServer(SshServer&&) = delete;
    SshServer& operator=(SshServer&&) = delete;
    ~SshServer();

    /// Two blanks, a letter that is not ASCII and a blank at the end.
    static QString password();

    QString user() const { return m_user; }
    int port() const { return m_port; }
    QByteArray hostKey() const;
    /// What it has logged so far.
    QByteArray log() const;
    /// Makes a file of its folder, which its configuration can name, and returns the path.
    QString addFile(const QString& name, const QByteArray& text) const;

    /// Ends every connection, as a server that shuts down does.
    void dropConnections() const;
    /// Freezes the server and every connection of it, or lets them go on.
    void setFrozen(bool frozen) const;

    /// Whether the programs that these fixtures start are installed.
    static bool isInstalled();

private:
    void start(const QByteArray& settings);

    QTemporaryDir m_folder;
    QString m_user;
    int m_port = 0;
    QProcess m_daemon;
};

} // namespace varnel::test
