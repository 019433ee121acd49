#pragma once

#include "engine/AppModel.h"
#include "ui/EngineObjects.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace varnel {

/// The library as its sheet shows it: the items that hold the words that are looked for, of one folder and
/// kind or of all, live or deleted; and the item that is chosen among them.
class LibraryListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(int total READ total NOTIFY countChanged)
    Q_PROPERTY(QStringList folders READ folders NOTIFY foldersChanged)
    Q_PROPERTY(QString folder READ folder WRITE setFolder NOTIFY filterChanged)
    Q_PROPERTY(int kind READ kind WRITE setKind NOTIFY filterChanged)
    Q_PROPERTY(bool showsDeleted READ showsDeleted WRITE setShowsDeleted NOTIFY filterChanged)
    Q_PROPERTY(int currentRow READ currentRow WRITE setCurrentRow NOTIFY currentChanged)
    Q_PROPERTY(QString currentIdentifier READ currentIdentifier NOTIFY currentChanged)
    Q_PROPERTY(QString currentTitle READ currentTitle NOTIFY currentChanged)
    Q_PROPERTY(QString currentNote READ currentNote NOTIFY currentChanged)
    Q_PROPERTY(QString currentFolder READ currentFolder NOTIFY currentChanged)
    Q_PROPERTY(QString currentAddress READ currentAddress NOTIFY currentChanged)
    Q_PROPERTY(QString currentDetail READ currentDetail NOTIFY currentChanged)
    Q_PROPERTY(bool currentAttached READ currentAttached NOTIFY currentChanged)
    Q_PROPERTY(bool currentDeleted READ currentDeleted NOTIFY currentChanged)

public:
    enum Role { TitleRole = Qt::UserRole, DrawingRole, DetailRole, AttachedRole };

    /// The model outlives the list.
    explicit LibraryListModel(AppModel& app, QObject* parent = nullptr);
    static LibraryListModel* create(QQmlEngine* engine, QJSEngine*)
    {
        return provided<LibraryListModel>(engine);
    }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    int count() const { return static_cast<int>(m_rows.size()); }
    /// How many items there are without any filter, the deleted ones included.
    int total() const { return static_cast<int>(m_app.libraryItems().size()); }
    /// The folders that hold something, in the order of their names.
    const QStringList& folders() const { return m_folders; }
    /// The folder that is shown; empty for all.
    const QString& folder() const { return m_folder; }
    void setFolder(const QString& folder);
    /// The number of the LibraryKind that is shown; -1 for all.
    int kind() const { return m_kind; }
    void setKind(int kind);
    bool showsDeleted() const { return m_showsDeleted; }
    void setShowsDeleted(bool deleted);

    /// The item that is chosen; -1 and empty texts without one.
    int currentRow() const;
    void setCurrentRow(int row);
    const QUuid& currentId() const { return m_current; }
    QString currentIdentifier() const { return m_current.toString(QUuid::WithoutBraces); }
    QString currentTitle() const;
    QString currentNote() const;
    QString currentFolder() const;
    /// Of a link.
    QString currentAddress() const;
    QString currentDetail() const;
    bool currentAttached() const;
    bool currentDeleted() const;
    /// Gives an item what was typed for it, whichever item is chosen by now: "title", "folder" and "note", as
    /// far as they are there. A blank title changes nothing, a blank folder is the usual one; an item that is
    /// gone changes nothing.
    Q_INVOKABLE void keepTyped(const QString& identifier, const QVariantMap& typed);
    /// Puts the chosen item into a folder.
    Q_INVOKABLE void moveTo(const QString& folder);
    /// Attaches the chosen item to the next message, or takes it off again.
    Q_INVOKABLE void toggleAttached();
    /// Deletes the chosen item, brings it back, or removes it for good once it is deleted.
    Q_INVOKABLE void remove();
    Q_INVOKABLE void restore();
    Q_INVOKABLE void removeForGood();
    /// Opens a new conversation about the chosen item.
    Q_INVOKABLE void handOff();
    /// Adds a link and chooses it; whether the text is the address of a page.
    Q_INVOKABLE bool addLink(const QString& address, const QString& folder);

Q_SIGNALS:
    void countChanged();
    void foldersChanged();
    void filterChanged();
    void currentChanged();

private:
    const LibraryItem* current() const;
    bool isShown(const LibraryItem& item, const QStringList& words) const;
    QString detailOf(const LibraryItem& item) const;
    void refresh();
    void refreshFolders();

    AppModel& m_app;
    std::vector<LibraryItem> m_rows;
    QStringList m_folders;
    QString m_folder;
    int m_kind = -1;
    bool m_showsDeleted = false;
    QUuid m_current;
};

} // namespace varnel
