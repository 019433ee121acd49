#include "support/ProgramRun.h"

#include "support/Await.h"

#include <QDir>
#include <QFile>

namespace varnel::test {

QString programPath(const QString& name)
{
    return qEnvironmentVariable("VARNEL_BIN") + QLatin1Char('/') + name;
}

ProgramRun::ProgramRun()
{
    const QProcessEnvironment own = QProcessEnvironment::systemEnvironment();
    const QStringList kept = {QStringLiteral("PATH"), QStringLiteral("ASAN_OPTIONS"),
                              QStringLiteral("LSAN_OPTIONS"), QStringLiteral("UBSAN_OPTIONS")};
    for (const QString& name : kept) {
        if (own.contains(name))
            m_environment.insert(name, own.value(name));
    }
    setVariable("HOME", m_profile.path());
    setVariable("XDG_CONFIG_HOME", m_profile.filePath(QStringLiteral("config")));
    setVariable("XDG_DATA_HOME", m_profile.filePath(QStringLiteral("data")));
    setVariable("XDG_RUNTIME_DIR", m_profile.path());
    setVariable("DBUS_SESSION_BUS_ADDRESS", QStringLiteral("unix:path=/nonexistent"));
}

ProgramRun::~ProgramRun()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        wait();
    }
}

void ProgramRun::setVariable(const char* name, const QString& value)
{
    m_environment.insert(QString::fromLatin1(name), value);
}

void ProgramRun::setPreferences(const QByteArray& text) const
{
    QDir(m_profile.path()).mkpath(QStringLiteral("config/varnel"));
    QFile file(m_profile.filePath(QStringLiteral("config/varnel/preferences.ini")));
    if (file.open(QIODevice::WriteOnly))
        file.write(text);
}

void ProgramRun::start(const QStringList& arguments)
{
    startProgram(programPath(QStringLiteral("varnel")), arguments);
}

void ProgramRun::startProgram(const QString& program, const QStringList& arguments)
{
    m_output.clear();
    m_errors.clear();
    m_process.setProcessEnvironment(m_environment);
    m_process.start(program, arguments);
}

bool ProgramRun::wait(std::chrono::milliseconds limit)
{
    return waitUntil([this] { return m_process.state() == QProcess::NotRunning; }, limit);
}

int ProgramRun::run(const QStringList& arguments)
{
    start(arguments);
    if (!wait() || m_process.exitStatus() != QProcess::NormalExit ||
        m_process.error() == QProcess::FailedToStart)
        return -1;
    return m_process.exitCode();
}

const QByteArray& ProgramRun::output()
{
    return m_output += m_process.readAllStandardOutput();
}

const QByteArray& ProgramRun::errors()
{
    return m_errors += m_process.readAllStandardError();
}

} // namespace varnel::test
