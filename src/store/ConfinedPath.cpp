#include "store/ConfinedPath.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <unistd.h>

namespace varnel {

namespace {

constexpr int mostLinks = 40; // as many as Linux follows

enum class Entry { Missing, Link, Other };

/// Looks at the last name of a path; for a link, `target` becomes what it holds.
Entry look(const QByteArray& path, QByteArray& target)
{
    std::array<char, PATH_MAX> text{};
    const ssize_t length = ::readlink(path.constData(), text.data(), text.size());
    if (length >= 0) {
        target = QByteArray(text.data(), length);
        return Entry::Link;
    }
    return errno == EINVAL ? Entry::Other : Entry::Missing;
}

void pushNames(QByteArrayList& names, const QByteArray& path)
{
    const QByteArrayList added = path.split('/');
    std::copy(added.rbegin(), added.rend(), std::back_inserter(names));
}

/// An absolute path with its links resolved as far as it exists. Nothing when there are too many links.
std::optional<QByteArray> withoutLinks(const QByteArray& path)
{
    QByteArray done;
    QByteArrayList names; // those to come, the next one last
    pushNames(names, path);
    bool exists = true;
    int links = 0;
    while (!names.isEmpty()) {
        const QByteArray name = names.takeLast();
        if (name.isEmpty() || name == ".")
            continue;
        const qsizetype above = done.size();
        if (name == "..") {
            done.truncate(std::max<qsizetype>(done.lastIndexOf('/'), 0));
            exists = true;
            continue;
        }
        done += '/';
        done += name;
        if (!exists)
            continue; // below nothing there is no link
        QByteArray target;
        const Entry entry = look(done, target);
        exists = entry != Entry::Missing;
        if (entry != Entry::Link)
            continue;
        if (++links > mostLinks)
            return std::nullopt;
        done.truncate(target.startsWith('/') ? 0 : above);
        pushNames(names, target);
    }
    return done.isEmpty() ? QByteArray("/") : done;
}

bool isConfinedAsWritten(const QString& relativePath)
{
    if (relativePath.startsWith(QLatin1Char('~')) || relativePath.contains(QLatin1Char('\\')) ||
        relativePath.contains(QChar::Null))
        return false;
    // A path that begins with "/" has an empty first name.
    const QStringList names = relativePath.split(QLatin1Char('/'));
    return std::ranges::none_of(names, [](const QString& name) {
        return name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..");
    });
}

} // namespace

QString ConfinedPath::absolute() const
{
    return (folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/')) + relative;
}

std::optional<ConfinedPath> confinedPath(const QString& folder, const QString& relativePath)
{
    if (!isConfinedAsWritten(relativePath))
        return std::nullopt;
    const QByteArray start = QFile::encodeName(QDir::cleanPath(QDir::current().absoluteFilePath(folder)));
    const std::optional<QByteArray> base = withoutLinks(start);
    const std::optional<QByteArray> target = withoutLinks(start + '/' + QFile::encodeName(relativePath));
    if (!base || !target)
        return std::nullopt;
    const QByteArray prefix = *base == "/" ? *base : *base + '/';
    if (!target->startsWith(prefix) || target->size() == prefix.size())
        return std::nullopt;
    return ConfinedPath{.folder = QFile::decodeName(*base),
                        .relative = QFile::decodeName(target->sliced(prefix.size()))};
}

std::optional<QUrl> resolveProjectPath(const QUrl& folder, const QString& relativePath)
{
    const std::optional<ConfinedPath> path = confinedPath(folder.toLocalFile(), relativePath);
    return path ? std::optional(QUrl::fromLocalFile(path->absolute())) : std::nullopt;
}

} // namespace varnel
