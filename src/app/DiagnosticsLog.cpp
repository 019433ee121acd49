#include "app/DiagnosticsLog.h"

#include "base/Text.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varnel {

namespace {

constexpr mode_t ownerOnly = 0600;

// ---- the message

bool isSlash(QChar character)
{
    return character == QLatin1Char('/') || character == QLatin1Char('\\');
}

/// Where the part of a URL that may hold a user ends, by the rule for URLs that are written correctly.
qsizetype authorityEnd(QStringView text, qsizetype at)
{
    for (; at < text.size(); ++at) {
        const QChar character = text[at];
        // Control characters do not end it: browsers drop line feeds and tabs from URLs.
        if (isSlash(character) || QStringView(u"?# \"<>").contains(character))
            break;
    }
    return at;
}

bool isPort(QStringView text)
{
    return std::ranges::all_of(
        text, [](QChar digit) { return digit >= QLatin1Char('0') && digit <= QLatin1Char('9'); });
}

/// How long the user-info is, with its "@", that may stand after the slashes of a URL; 0 for none.
qsizetype userInfoLength(QStringView rest)
{
    const QStringView authority = rest.first(authorityEnd(rest, 0));
    if (const qsizetype at = authority.lastIndexOf(QLatin1Char('@')); at >= 0)
        return at + 1;
    const qsizetype colon = authority.lastIndexOf(QLatin1Char(':'));
    if (colon < 0 || isPort(authority.sliced(colon + 1)) || authority.startsWith(QLatin1Char('[')))
        return 0;
    // No port: a password that holds one of the delimiters as it is.
    constexpr qsizetype longestPassword = 1024;
    const QStringView near = rest.first(std::min(rest.size(), longestPassword));
    const qsizetype blank = near.indexOf(QLatin1Char(' '));
    return (blank < 0 ? near : near.first(blank)).lastIndexOf(QLatin1Char('@')) + 1;
}

QString withoutUserInfo(QStringView text)
{
    QString kept;
    kept.reserve(text.size());
    for (qsizetype i = 0; i < text.size();) {
        const bool slashesBegin = isSlash(text[i]) && i + 1 < text.size() && isSlash(text[i + 1]);
        kept += text[i++];
        if (!slashesBegin)
            continue;
        while (i < text.size() && isSlash(text[i]))
            kept += text[i++];
        i += userInfoLength(text.sliced(i));
    }
    return kept;
}

bool needsEscape(char16_t unit)
{
    const bool isControl = unit < 0x20 || (unit >= 0x7f && unit < 0xa0);
    const bool endsLine = unit == 0x2028 || unit == 0x2029;
    const bool turnsDirection = (unit >= 0x202a && unit <= 0x202e) || (unit >= 0x2066 && unit <= 0x2069);
    return isControl || endsLine || turnsDirection;
}

QString escaped(char16_t unit)
{
    switch (unit) {
    case u'\n':
        return QStringLiteral("\\n");
    case u'\r':
        return QStringLiteral("\\r");
    case u'\t':
        return QStringLiteral("\\t");
    default:
        return unit < 0x100 ? QStringLiteral("\\x%1").arg(unit, 2, 16, QLatin1Char('0'))
                            : QStringLiteral("\\u%1").arg(unit, 4, 16, QLatin1Char('0'));
    }
}

// ---- the file

bool writeAll(int descriptor, const QByteArray& bytes)
{
    for (qsizetype written = 0; written < bytes.size();) {
        const ssize_t count = ::write(descriptor, bytes.constData() + written,
                                      static_cast<std::size_t>(bytes.size() - written));
        if (count < 0 && errno != EINTR)
            return false;
        written += std::max<ssize_t>(count, 0);
    }
    return true;
}

/// False when the file is none that takes a line at its end. Whether the line went in then is another
/// matter: a full disk is no reason to drop the lines before.
bool append(const QByteArray& path, const QByteArray& line)
{
    const int descriptor = ::open(
        path.constData(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, ownerOnly);
    if (descriptor < 0)
        return false;
    struct stat status{};
    const bool usable = ::fstat(descriptor, &status) == 0 && !S_ISFIFO(status.st_mode);
    if (usable) {
        if (S_ISREG(status.st_mode) && (status.st_mode & 0777U) != ownerOnly)
            static_cast<void>(::fchmod(descriptor, ownerOnly));
        // In one call, so that the lines of two programs cannot mix.
        static_cast<void>(writeAll(descriptor, line));
    }
    ::close(descriptor);
    return usable;
}

void replace(const QByteArray& path, const QByteArray& line)
{
    const QByteArray fresh = path + ".new-" + QByteArray::number(::getpid());
    const int descriptor =
        ::open(fresh.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, ownerOnly);
    if (descriptor < 0)
        return;
    const bool written = writeAll(descriptor, line);
    ::close(descriptor);
    if (!written || ::rename(fresh.constData(), path.constData()) != 0)
        ::unlink(fresh.constData());
}

void makeFolder(const QString& folder)
{
    // The folders above are everybody's, only the last is this program's.
    constexpr auto owner = QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
    const QDir dir(folder);
    if (!dir.exists() && QDir().mkpath(QDir::cleanPath(dir.filePath(QStringLiteral("..")))))
        QDir().mkdir(folder, owner);
}

} // namespace

DiagnosticsLog::DiagnosticsLog(QString folder, const Clock& clock)
    : m_folder(std::move(folder))
    , m_clock(clock)
{}

QString DiagnosticsLog::defaultFolder()
{
    return QDir::homePath() + QStringLiteral("/Library/Logs/Varnel");
}

QString DiagnosticsLog::file() const
{
    return m_folder + QStringLiteral("/varnel.log");
}

void DiagnosticsLog::log(const QString& message) const
{
    makeFolder(m_folder);
    const QByteArray line =
        (toIso8601(m_clock.now()) + QLatin1Char(' ') + logText(message) + QLatin1Char('\n')).toUtf8();
    const QByteArray path = QFile::encodeName(file());
    if (!append(path, line))
        replace(path, line);
}

QString logText(const QString& message)
{
    constexpr qsizetype limit = 2048;
    constexpr qsizetype ellipsisBytes = 3;
    const QString text = wellFormed(withoutUserInfo(message));
    QString shown;
    qsizetype bytes = 0;
    qsizetype roomForEllipsis = 0; // how much of `shown` leaves room for it
    for (qsizetype i = 0; i < text.size();) {
        const char16_t unit = text[i].unicode();
        const qsizetype units = text[i].isHighSurrogate() ? 2 : 1;
        const QString piece = needsEscape(unit) ? escaped(unit) : text.sliced(i, units);
        bytes += piece.toUtf8().size();
        if (bytes > limit)
            return shown.left(roomForEllipsis) + QChar(0x2026);
        shown += piece;
        if (bytes <= limit - ellipsisBytes)
            roomForEllipsis = shown.size();
        i += units;
    }
    return shown;
}

} // namespace varnel
