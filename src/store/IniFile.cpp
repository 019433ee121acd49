#include "store/IniFile.h"

#include "base/Error.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace varnel {

namespace {

constexpr qint64 largestSize = qint64(16) * 1024 * 1024;

bool isIniLine(const QByteArray& line)
{
    if (line.isEmpty() || line.startsWith(';') || line.startsWith('#'))
        return true;
    if (line.contains('\0'))
        return false;
    return line.startsWith('[') ? line.contains(']') : line.indexOf('=') > 0;
}

/// Where QSettings stands in a value that may go on over several lines.
struct Reading
{
    bool quoted = false;
    bool continued = false; ///< a backslash has taken the end of the line along

    /// @param line with or without its end.
    void take(const QByteArray& line)
    {
        if (!continued)
            quoted = false;
        continued = false;
        qsizetype end = line.size();
        while (end > 0 && (line[end - 1] == '\n' || line[end - 1] == '\r'))
            --end;
        for (qsizetype i = 0; i < end; ++i) {
            if (line[i] == '\\')
                continued = ++i == end;
            else if (line[i] == '"')
                quoted = !quoted;
            else if (line[i] == ';' && !quoted)
                return; // the rest is a comment, in which nothing has a meaning
        }
    }
};

} // namespace

std::optional<QString> whyNotIni(const QString& file)
{
    const QFileInfo info(file);
    if (!info.exists())
        return std::nullopt;
    if (!info.isFile())
        return QStringLiteral("it is not a file");
    if (info.size() > largestSize)
        return QStringLiteral("it is larger than 16 MiB");
    QFile opened(file);
    if (!opened.open(QIODevice::ReadOnly))
        return opened.errorString();
    Reading reading;
    for (int number = 1; !opened.atEnd(); ++number) {
        QByteArray line = opened.readLine();
        if (number == 1 && line.startsWith("\xEF\xBB\xBF"))
            line.remove(0, 3); // the mark some editors put before UTF-8
        if (!reading.continued && !isIniLine(line.trimmed()))
            return QStringLiteral("line %1 is no key and no section").arg(number);
        reading.take(line);
        // QSettings would take the next lines for a part of this value. It never writes such a value itself,
        // so the mark was forgotten by hand, and the settings of those lines would be lost without a word.
        if (reading.quoted && (!reading.continued || opened.atEnd()))
            return QStringLiteral("line %1 has an open quotation mark").arg(number);
    }
    if (opened.error() != QFileDevice::NoError)
        return opened.errorString();
    return std::nullopt;
}

void createPrivateFile(const QString& file)
{
    const QFileInfo info(file);
    if (info.exists() || info.isSymLink())
        return;
    const QDir folder = info.dir();
    if (!folder.exists()) {
        constexpr auto ownerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
        const bool made = QDir().mkpath(QFileInfo(folder.path()).path()) &&
                          (QDir().mkdir(folder.path(), ownerOnly) || folder.exists());
        if (!made)
            throw Error(QStringLiteral("The folder %1 could not be made.").arg(folder.path()));
    }
    QFile created(file);
    if (!created.open(QIODevice::WriteOnly | QIODevice::NewOnly,
                      QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        throw Error(QStringLiteral("%1 could not be made: %2").arg(file, created.errorString()));
}

} // namespace varnel
