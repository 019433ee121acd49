#include "store/LibraryPath.h"

#include "base/Error.h"
#include "store/SelfRunningFile.h"

#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <array>

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

QString libraryFile(const QString& root, const QString& relativePath)
{
    QString problem = whyNotLibraryPath(relativePath);
    const QString file = root + QLatin1Char('/') + relativePath;
    if (problem.isEmpty()) {
        // A link is followed by whoever opens the file. Every name on the way is looked at.
        for (qsizetype end = root.size(); end >= 0; end = file.indexOf(QLatin1Char('/'), end + 1)) {
            if (end > root.size() && QFileInfo(file.left(end)).isSymLink())
                problem = QStringLiteral("a link stands in its way");
        }
        if (QFileInfo(file).isSymLink())
            problem = QStringLiteral("a link stands in its way");
    }
    if (!problem.isEmpty())
        throw Error(QStringLiteral("The library path \"%1\" cannot be used: %2.").arg(relativePath, problem));
    return file;
}

} // namespace varnel
