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
    bool continued = false;
    for (int number = 1; !opened.atEnd(); ++number) {
        QByteArray line = opened.readLine();
        if (number == 1 && line.startsWith("\xEF\xBB\xBF"))
            line.remove(0, 3); // the mark some editors put before UTF-8
        line = line.trimmed();
        if (!continued && !isIniLine(line))
            return QStringLiteral("line %1 is no key and no section").arg(number);
        continued = line.endsWith('\\');
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
