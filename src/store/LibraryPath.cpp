#include "store/LibraryPath.h"

#include "base/Error.h"
#include "store/ReplacingFile.h"
#include "store/SelfRunningFile.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <array>
#include <unistd.h>

namespace varnel {

namespace {

/// The files that the program keeps at the top of the data folder, with what it adds to their names.
constexpr std::array ownNames{QLatin1String("sessions."), QLatin1String("library."), QLatin1String("drafts."),
                              QLatin1String("recovery.")};

bool isOwnName(const QString& name)
{
    const QString plain = foldedPath(name);
    return plain == QLatin1String("backups") ||
           std::any_of(ownNames.begin(), ownNames.end(),
                       [&plain](QLatin1String own) { return plain.startsWith(own); });
}

bool isPlainName(const QString& name)
{
    const bool hasOddCharacter = std::any_of(name.begin(), name.end(), [](QChar unit) {
        return unit.unicode() < 0x20 || unit == QLatin1Char('\\') || unit.unicode() == 0x7f;
    });
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..") && !hasOddCharacter;
}

} // namespace

QString whyNotLibraryPath(const QString& relativePath)
{
    if (relativePath.startsWith(QLatin1Char('/')) || relativePath.startsWith(QLatin1Char('~')))
        return QStringLiteral("it leads out of the data folder");
    const QStringList names = relativePath.split(QLatin1Char('/'));
    if (names.contains(QStringLiteral("..")))
        return QStringLiteral("it leads out of the data folder");
    if (!std::all_of(names.begin(), names.end(), isPlainName))
        return QStringLiteral("it is no plain path");
    if (isOwnName(names.front()))
        return QStringLiteral("the program keeps its own files there");
    return {};
}

QString whyNotStored(const QString& root, const QString& relativePath)
{
    QString problem = whyNotLibraryPath(relativePath);
    if (!problem.isEmpty())
        return problem;
    // A link is followed by whoever opens the file. Every name on the way is looked at.
    const QString file = root + QLatin1Char('/') + relativePath;
    bool isLink = QFileInfo(file).isSymLink();
    for (qsizetype end = root.size(); end >= 0; end = file.indexOf(QLatin1Char('/'), end + 1))
        isLink = isLink || (end > root.size() && QFileInfo(file.left(end)).isSymLink());
    return isLink ? QStringLiteral("a link stands in its way") : QString();
}

QString libraryFile(const QString& root, const QString& relativePath)
{
    const QString problem = whyNotStored(root, relativePath);
    if (!problem.isEmpty())
        throw Error(QStringLiteral("The library path \"%1\" cannot be used: %2.").arg(relativePath, problem));
    return root + QLatin1Char('/') + relativePath;
}

void removeUnfinishedCopies(const QString& root, const std::stop_token& stop)
{
    constexpr qint64 quietSeconds = 60;
    // A finished copy has one dot in its name, so none is called like this.
    static const QRegularExpression unfinished(
        QStringLiteral(R"(^[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}\.[^.]+%1$)")
            .arg(QRegularExpression::escape(ReplacingFile::temporarySuffix())));
    const QDateTime quietSince = QDateTime::currentDateTimeUtc().addSecs(-quietSeconds);
    // Links are not followed.
    QDirIterator files(root, {QLatin1Char('*') + ReplacingFile::temporarySuffix()},
                       QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (files.hasNext() && !stop.stop_requested()) {
        const QString file = files.next();
        const QString relative = QDir(root).relativeFilePath(file);
        if (unfinished.match(files.fileName()).hasMatch() && whyNotStored(root, relative).isEmpty() &&
            files.fileInfo().lastModified() < quietSince)
            ::unlink(QFile::encodeName(file).constData());
    }
}

} // namespace varnel
