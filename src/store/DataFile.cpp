#include "store/DataFile.h"

#include "store/ReplacingFile.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <unistd.h>

namespace varnel {

namespace {

/// More than this the parser does not take; such a file would not load again.
constexpr qint64 largestSize = qint64(0xFFFFFFFF) - JsonParser::padding;

} // namespace

QString SetAside::text() const
{
    const QString format =
        reason == Reason::Unreadable
            ? QStringLiteral("%1 could not be read. What it held is kept as %2.")
            : QStringLiteral("%1 was changed by another program. What that wrote is kept as %2.");
    return format.arg(file, path);
}

std::optional<FileContents> DataFile::read()
{
    m_wasRead = true;
    m_isReadable = true;
    m_known.reset();
    const QFileInfo info(m_path);
    if (!info.exists() && !info.isSymLink())
        return std::nullopt;
    // Until its contents have been understood.
    m_isReadable = false;
    std::optional<FileContents> contents = readFile(m_path, largestSize);
    if (contents) {
        m_known = contents->stamp;
        // There is nothing in an empty file that could be lost.
        m_isReadable = contents->size == 0;
    }
    return contents;
}

std::optional<SetAside> DataFile::keepOldContents()
{
    const QFileInfo info(m_path);
    if (!info.exists() && !info.isSymLink()) {
        // What could not be read is gone; whatever comes to stand there from now on is something else.
        m_isReadable = true;
        m_known.reset();
        return std::nullopt;
    }
    if (m_wasRead && !m_isReadable) {
        const QString path = setAsideUnreadable(withoutLink(m_path));
        m_isReadable = true;
        m_known.reset();
        return SetAside{.reason = SetAside::Reason::Unreadable, .file = m_path, .path = path};
    }
    const std::optional<FileStamp> present = stampOf(m_path);
    if (present == m_known || (present && present->size == 0))
        return std::nullopt;
    // What cannot even be looked at is no file that a second name could be given to.
    const QString path = info.isFile() ? keepAside(m_path) : setAsideUnreadable(withoutLink(m_path));
    m_known = stampOf(m_path);
    return SetAside{.reason = SetAside::Reason::Changed, .file = m_path, .path = path};
}

std::optional<SetAside> DataFile::save(const std::function<void(JsonWriter&)>& write,
                                       const std::stop_token& stop)
{
    makeFolder(QFileInfo(m_path).path());
    ReplacingFile file(m_path);
    qint64 size = 0;
    JsonWriter writer(JsonWriter::Style::Pretty, [this, &file, &size, &stop](std::string_view piece) {
        if (stop.stop_requested())
            throw Cancelled();
        size += static_cast<qint64>(piece.size());
        if (size > largestSize)
            throw Error(QStringLiteral("%1 could not be saved: it would be larger than 4 GiB, more than can "
                                       "be read again.")
                            .arg(m_path));
        file.write(piece);
    });
    write(writer);
    writer.finish();
    file.sync();
    if (std::optional<SetAside> kept = keepOldContents())
        m_unreported.push_back(*std::move(kept));
    file.commit(m_known);
    if (m_unreported.empty())
        return std::nullopt;
    SetAside first = std::move(m_unreported.front());
    m_unreported.erase(m_unreported.begin());
    return first;
}

void DataFile::remove()
{
    if (::unlink(QFile::encodeName(m_path).constData()) != 0 && errno != ENOENT)
        throw fileError(m_path, QStringLiteral("could not be removed"), errno);
    m_known.reset();
}

} // namespace varnel
