#include "base/Error.h"

namespace varnel {

Error::Error(QString message)
    : m_message(std::move(message))
    , m_what(m_message.toUtf8())
{}

static QString describe(const QString& path, const QString& problem)
{
    return path.isEmpty() ? problem : path + QStringLiteral(": ") + problem;
}

DecodeError::DecodeError(QString path, QString problem)
    : Error(describe(path, problem))
    , m_path(std::move(path))
    , m_problem(std::move(problem))
{}

DecodeError::DecodeError(QString message, QString path, QString problem)
    : Error(std::move(message))
    , m_path(std::move(path))
    , m_problem(std::move(problem))
{}

DecodeError DecodeError::introducedBy(const QString& sentence) const
{
    return {sentence + QLatin1Char(' ') + message(), m_path, m_problem};
}

DecodeError DecodeError::within(const QString& step) const
{
    if (m_path.isEmpty() || m_path.startsWith(QLatin1Char('[')))
        return {step + m_path, m_problem};
    return {step + QLatin1Char('.') + m_path, m_problem};
}

} // namespace varnel
