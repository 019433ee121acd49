#pragma once

#include "base/Clock.h"
#include "store/DataFile.h"
#include "store/LibraryItem.h"
#include "store/PromptMedia.h"
#include "store/SaveQueue.h"

#include <QString>
#include <QUrl>
#include <QUuid>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace varnel {

/// More than this is not imported, in bytes.
constexpr qint64 largestImport = qint64(100) * 1024 * 1024;

/// Copies a file into the data folder and yields the item that stands for it, which no index holds yet. It
/// touches nothing else, so it may run on any thread. Only regular files are taken; it never waits for one.
/// Throws Error.
LibraryItem copyIntoLibrary(const QString& root, const QUrl& source, const QString& folder, Instant now);

/// The same with contents that no file holds yet, such as what was pasted.
/// @param fileName what a file with these contents would be called; its extension says what they are.
LibraryItem storeInLibrary(const QString& root, const QByteArray& contents, const QString& fileName,
                           const QString& folder, Instant now);

/// Whether the bytes of an item can be sent along with a prompt, as an image or a PDF.
bool hasMedia(const LibraryItem& item);
/// The bytes of an item for a prompt; nothing when it has none that can be sent. Reads the stored copy and
/// throws Error when that fails. May run on any thread.
std::optional<PromptMedia> mediaOf(const QString& root, const LibraryItem& item);

/// The user's collection of files, PDFs, images and links: its index and the stored copies.
///
/// Every operation that changes something saves the index. When that throws Error, nothing has changed. It
/// belongs to no thread, but only one may use it at a time.
class LibraryStore
{
public:
    /// Does a save of the index, at once or later and on another thread; of several the latest counts. A save
    /// yields what had to be kept beside the index, and throws Error.
    using Saver = std::function<void(SaveQueue::Save)>;

    /// Reads the index of a data folder, which is made if it is missing. An index that cannot be read gives
    /// an empty library; loadProblem() says so, and the next save renames it, so that nothing is lost.
    explicit LibraryStore(const QString& root, Saver saver = saveAtOnce);

    static QString indexIn(const QString& root) { return root + QStringLiteral("/library.json"); }

    const QString& root() const { return m_root; }
    /// Live and deleted ones, the newest first.
    const std::vector<LibraryItem>& items() const { return m_items; }
    /// Those that are shown and attached.
    std::vector<LibraryItem> liveItems() const;
    /// The live item of that identifier; null if there is none. Valid until the library changes.
    const LibraryItem* find(const QUuid& id) const;
    /// One line for the user when the index could not be read.
    const std::optional<QString>& loadProblem() const { return m_loadProblem; }

    /// Copies a file into the library. See copyIntoLibrary().
    const LibraryItem& importFile(const QUrl& source, const QString& folder, Instant now);
    /// Puts an item in front, for example one that copyIntoLibrary() made. Until the index was saved, the
    /// stored copy is the caller's.
    const LibraryItem& add(LibraryItem item);
    const LibraryItem& addLink(const QString& title, const QString& url, const QString& note,
                               const QString& folder, Instant now);
    /// Changes the title, the note or the folder of an item; everything else of it stays.
    void changeItem(const QUuid& id, const std::function<void(LibraryItem&)>& edit);
    /// Hides an item; the stored copy stays. An identifier that names none changes nothing.
    void markDeleted(const QUuid& id, Instant now);
    /// Shows a deleted item again.
    void restore(const QUuid& id);
    /// Removes an item and its stored copy for good.
    void removeForGood(const QUuid& id);
    /// Takes all items of another index, for example that of a backup, in place of these.
    void replaceItems(std::vector<LibraryItem> items);

private:
    static void saveAtOnce(const SaveQueue::Save& save) { save({}); }
    void change(std::vector<LibraryItem> items);

    QString m_root;
    Saver m_saver;
    /// Used by saves only once it was read.
    std::shared_ptr<DataFile> m_index;
    std::vector<LibraryItem> m_items;
    std::optional<QString> m_loadProblem;
};

} // namespace varnel
