#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace varnel {

/// Something went wrong and the user is to be told: message() is the text that is shown, as it stands.
class Error : public std::exception
{
public:
    explicit Error(QString message);

    const QString& message() const noexcept { return m_message; }
    const char* what() const noexcept override { return m_what.constData(); }

private:
    QString m_message;
    QByteArray m_what;
};

/// The user stopped the work. Deliberately no Error: nobody shows it, and a catch for errors lets it pass.
class Cancelled : public std::exception
{
public:
    const char* what() const noexcept override { return "cancelled"; }
};

/// Data did not have the form that was expected. The message names the place, for example
/// "[3].messages[0].role: unknown value "bot"".
class DecodeError : public Error
{
public:
    /// @param path where in the document, empty for its top.
    /// @param problem what is wrong there.
    DecodeError(QString path, QString problem);

    const QString& path() const noexcept { return m_path; }
    const QString& problem() const noexcept { return m_problem; }

    /// The same problem, seen from one level further up: `step` is put before the path.
    DecodeError within(const QString& step) const;
    /// The same problem with a sentence before it that says what could not be read.
    DecodeError introducedBy(const QString& sentence) const;

private:
    DecodeError(QString message, QString path, QString problem);

    QString m_path;
    QString m_problem;
};

} // namespace varnel
