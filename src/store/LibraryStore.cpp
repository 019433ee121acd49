#include "store/LibraryStore.h"

#include "base/Text.h"
#include "store/FileCopy.h"
#include "store/LibraryPath.h"
#include "store/ReplacingFile.h"
#include "store/StoredValues.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace varnel {

namespace {

/// Removes a stored copy; that there is none is no failure.
void removeStored(const QString& file)
{
    if (::unlink(QFile::encodeName(file).constData()) != 0 && errno != ENOENT && errno != ENOTDIR)
        throw fileError(file, QStringLiteral("could not be removed"), errno);
}

QString folderName(const QString& folder)
{
    const QString name = wellFormed(folder.trimmed());
    return name.isEmpty() ? QStringLiteral("Library") : name;
}

/// The file's own name, taken apart at its last dot; a dot in front hides a file and begins no extension.
struct NameParts
{
    QString title;
    QString extension;
};
NameParts partsOf(const QString& fileName)
{
    const qsizetype dot = fileName.lastIndexOf(QLatin1Char('.'));
    if (dot <= 0)
        return {.title = fileName, .extension = {}};
    return {.title = fileName.left(dot), .extension = fileName.mid(dot + 1)};
}

/// How the stored copy's name ends. An extension that no path may hold is none.
QString storedExtension(const QString& extension)
{
    constexpr qsizetype longest = 100;
    const bool isUsable =
        extension.size() <= longest && whyNotLibraryPath(QLatin1Char('x') + extension).isEmpty();
    return extension.isEmpty() || !isUsable ? QStringLiteral("bin") : extension;
}

void checkSource(const QString& source)
{
    const qint64 size = stampOf(openRegularFile(source).get()).size;
    if (size > largestImport)
        throw Error(QStringLiteral("%1 is larger than %2 MiB, the most that can be imported.")
                        .arg(source)
                        .arg(largestImport / 1024 / 1024));
}

/// An item for a file of this name, with the place where its stored copy belongs.
LibraryItem newItem(const QString& fileName, const QString& folder, Instant now)
{
    const NameParts name = partsOf(wellFormed(fileName));
    return {.id = QUuid::createUuid(),
            .kind = kindOfFile(fileName),
            .title = name.title,
            .note = {},
            .folder = folderName(folder),
            .relativePath = folderName(folder) + QLatin1Char('/') + uuidText(QUuid::createUuid()) +
                            QLatin1Char('.') + storedExtension(name.extension),
            .urlString = std::nullopt,
            .createdAt = now,
            .deletedAt = std::nullopt};
}

/// Makes the folder of an item's stored copy and yields the path of that.
QString roomFor(const QString& root, const LibraryItem& item)
{
    const QString target = libraryFile(root, *item.relativePath);
    makeFolder(QFileInfo(target).path());
    return target;
}

} // namespace

LibraryItem copyIntoLibrary(const QString& root, const QUrl& source, const QString& folder, Instant now)
{
    if (!source.isLocalFile())
        throw Error(QStringLiteral("%1 is no file on this computer.")
                        .arg(source.toDisplayString(QUrl::RemovePassword)));
    const QString path = source.toLocalFile();
    checkSource(path);
    LibraryItem item = newItem(QFileInfo(path).fileName(), folder, now);
    copyFile(path, roomFor(root, item));
    return item;
}

LibraryItem storeInLibrary(const QString& root, const QByteArray& contents, const QString& fileName,
                           const QString& folder, Instant now)
{
    LibraryItem item = newItem(fileName, folder, now);
    ReplacingFile file(roomFor(root, item));
    file.write(std::string_view(contents.constData(), static_cast<std::size_t>(contents.size())));
    file.commitNew();
    return item;
}

bool hasMedia(const LibraryItem& item)
{
    return item.relativePath && (item.kind == LibraryKind::Image || item.kind == LibraryKind::Pdf);
}

std::optional<PromptMedia> mediaOf(const QString& root, const LibraryItem& item)
{
    if (!hasMedia(item))
        return std::nullopt;
    const QString file = libraryFile(root, *item.relativePath);
    FileBeginning contents = readBeginning(file, largestImport);
    if (contents.size > largestImport)
        throw Error(QStringLiteral("%1 is larger than %2 MiB.").arg(file).arg(largestImport / 1024 / 1024));
    return PromptMedia{.mime = item.kind == LibraryKind::Pdf ? QStringLiteral("application/pdf")
                                                             : imageMimeType(*item.relativePath),
                       .data = std::move(contents.bytes)};
}

LibraryStore::LibraryStore(const QString& root, Saver saver)
    : m_root(root)
    , m_saver(std::move(saver))
    , m_index(std::make_shared<DataFile>(indexIn(root)))
{
    try {
        makeFolder(root);
    } catch (const Error&) {
        // A save into a folder that is still missing says so itself.
    }
    try {
        m_items = m_index->load(decodeLibraryItems).value_or(std::vector<LibraryItem>());
    } catch (const Error& error) {
        m_loadProblem = error.message();
    }
}

std::vector<LibraryItem> LibraryStore::liveItems() const
{
    std::vector<LibraryItem> live;
    std::copy_if(m_items.begin(), m_items.end(), std::back_inserter(live),
                 [](const LibraryItem& item) { return item.isLive(); });
    return live;
}

const LibraryItem* LibraryStore::find(const QUuid& id) const
{
    const auto found = std::find_if(m_items.begin(), m_items.end(), [&id](const LibraryItem& item) {
        return item.id == id && item.isLive();
    });
    return found == m_items.end() ? nullptr : &*found;
}

void LibraryStore::change(std::vector<LibraryItem> items)
{
    m_saver([index = m_index, items](const std::stop_token& stop) {
        return index->save([&items](JsonWriter& writer) { writeLibraryItems(writer, items); }, stop);
    });
    m_items = std::move(items);
}

const LibraryItem& LibraryStore::importFile(const QUrl& source, const QString& folder, Instant now)
{
    LibraryItem item = copyIntoLibrary(m_root, source, folder, now);
    const QString stored = libraryFile(m_root, *item.relativePath);
    try {
        return add(std::move(item));
    } catch (const Error&) {
        removeStored(stored); // no index knows of it
        throw;
    }
}

const LibraryItem& LibraryStore::add(LibraryItem item)
{
    std::vector<LibraryItem> items = m_items;
    items.insert(items.begin(), std::move(item));
    change(std::move(items));
    return m_items.front();
}

const LibraryItem& LibraryStore::addLink(const QString& title, const QString& url, const QString& note,
                                         const QString& folder, Instant now)
{
    return add({.id = QUuid::createUuid(),
                .kind = LibraryKind::Link,
                .title = wellFormed(title),
                .note = wellFormed(note),
                .folder = folderName(folder),
                .relativePath = std::nullopt,
                .urlString = wellFormed(url),
                .createdAt = now,
                .deletedAt = std::nullopt});
}

static auto itemOf(std::vector<LibraryItem>& items, const QUuid& id)
{
    return std::find_if(items.begin(), items.end(), [&id](const LibraryItem& item) { return item.id == id; });
}

void LibraryStore::changeItem(const QUuid& id, const std::function<void(LibraryItem&)>& edit)
{
    std::vector<LibraryItem> items = m_items;
    const auto item = itemOf(items, id);
    if (item == items.end())
        return;
    LibraryItem edited = *item;
    edit(edited);
    item->title = wellFormed(edited.title);
    item->note = wellFormed(edited.note);
    item->folder = folderName(edited.folder);
    change(std::move(items));
}

void LibraryStore::markDeleted(const QUuid& id, Instant now)
{
    std::vector<LibraryItem> items = m_items;
    const auto item = itemOf(items, id);
    if (item == items.end())
        return;
    item->deletedAt = now;
    change(std::move(items));
}

void LibraryStore::restore(const QUuid& id)
{
    std::vector<LibraryItem> items = m_items;
    const auto item = itemOf(items, id);
    if (item == items.end())
        return;
    item->deletedAt.reset();
    change(std::move(items));
}

void LibraryStore::removeForGood(const QUuid& id)
{
    std::vector<LibraryItem> items = m_items;
    const auto item = itemOf(items, id);
    if (item == items.end())
        return;
    // A path that leads elsewhere, by itself or by a link, was never a stored copy.
    if (item->relativePath && whyNotStored(m_root, *item->relativePath).isEmpty())
        removeStored(libraryFile(m_root, *item->relativePath));
    items.erase(item);
    change(std::move(items));
}

void LibraryStore::replaceItems(std::vector<LibraryItem> items)
{
    change(std::move(items));
}

} // namespace varnel
