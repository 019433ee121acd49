#pragma once

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <chrono>

namespace varnel::test {

/// The program itself, run as a child with a profile of its own: no preference, no display and no session of
/// the user reaches it.
class ProgramRun
{
public:
    ProgramRun();
    ~ProgramRun();
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;
    ProgramRun(ProgramRun&&) = delete;
    ProgramRun& operator=(ProgramRun&&) = delete;

    void setVariable(const char* name, const QString& value);
    /// Writes the preferences file of the profile.
    void setPreferences(const QByteArray& text) const;
    /// The folder that holds the whole profile.
    QString folder() const { return m_profile.path(); }
    QProcess& process() { return m_process; }

    void start(const QStringList& arguments);
    /// Starts another program with the same profile.
    void startProgram(const QString& program, const QStringList& arguments);
    /// Turns the event loop until the child has ended; false if it does not.
    bool wait(std::chrono::milliseconds limit = std::chrono::seconds(10));
    /// start() and wait(); yields the exit status, -1 if it hangs or dies by a signal.
    int run(const QStringList& arguments);

    const QByteArray& output();
    const QByteArray& errors();

private:
    QTemporaryDir m_profile;
    QProcessEnvironment m_environment;
    QProcess m_process;
    QByteArray m_output;
    QByteArray m_errors;
};

/// The path of one of the built programs.
QString programPath(const QString& name);

} // namespace varnel::test
