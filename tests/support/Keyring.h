#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace varnel::test {

/// Puts another value, or none, into an environment variable of this process for as long as it lives.
class EnvironmentVariable
{
public:
    EnvironmentVariable(const char* name, const QByteArray& value);
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;
    EnvironmentVariable(EnvironmentVariable&&) = delete;
    EnvironmentVariable& operator=(EnvironmentVariable&&) = delete;
    ~EnvironmentVariable();

private:
    const char* m_name;
    QByteArray m_previous;
    bool m_wasSet;
};

/// A session bus of its own in a temporary folder, on which no service is started by itself. While it lives
/// it is this process's session bus. Throws std::runtime_error if it does not start.
class PrivateBus
{
public:
    PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    PrivateBus(PrivateBus&&) = delete;
    PrivateBus& operator=(PrivateBus&&) = delete;
    ~PrivateBus();

    /// Ends the bus before its time.
    void end();
    /// Calls a method with dbus-send and returns what it prints; empty if the call fails.
    QByteArray call(const QString& service, const QString& path, const QString& method,
                    const QStringList& arguments = {}) const;
    /// An environment whose home and data folders are in the temporary folder, on this bus.
    QProcessEnvironment environment() const;

private:
    QTemporaryDir m_folder;
    QProcess m_daemon;
    std::optional<EnvironmentVariable> m_address;
};

/// A real GNOME keyring with an empty, unlocked collection, on a bus of its own. It never touches the user's.
class Keyring
{
public:
    Keyring();
    Keyring(const Keyring&) = delete;
    Keyring& operator=(const Keyring&) = delete;
    Keyring(Keyring&&) = delete;
    Keyring& operator=(Keyring&&) = delete;
    ~Keyring();

    void lock();
    /// Freezes the keyring as a hung service would be, or lets it go on.
    void setFrozen(bool frozen);
    /// Ends the bus, as a session that ends does.
    void endBus();
    /// Runs secret-tool with the standard input given and returns what it prints.
    QByteArray secretTool(const QStringList& arguments, const QByteArray& input = {}) const;

private:
    PrivateBus m_bus;
    QProcess m_daemon;
};

/// Whether the programs that these fixtures start are installed.
bool keyringInstalled();

} // namespace varnel::test
