#pragma once

#include "base/Task.h"
#include "engine/AppModel.h"
#include "ui/EngineObjects.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace varnel {

/// A service that wants a key.
struct KeyRow
{
    QString name;
    /// The heading that it stands under.
    QString group;
    /// Where its key comes from.
    QString line;
    /// What else there is to know of the key; may be empty.
    QString note;
    /// The account that a typed key is saved under.
    QString savingAccount;
    /// The account of the saved key that may be removed; empty if there is none.
    QString removableAccount;
    /// Why the key could not be saved or removed; empty if it could.
    QString problem;

    bool operator==(const KeyRow&) const = default;
};

/// The services and where their keys come from: the providers, then the search services. Keys pass through on
/// their way to the system's store and are never kept.
class KeyListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged)

public:
    enum Role { NameRole = Qt::UserRole, GroupRole, LineRole, NoteRole, RemovableRole, ProblemRole };

    /// The model outlives the list.
    explicit KeyListModel(AppModel& app, QObject* parent = nullptr);
    static KeyListModel* create(QQmlEngine* engine, QJSEngine*) { return provided<KeyListModel>(engine); }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Whether a key is being saved or removed.
    bool busy() const { return m_busy; }
    /// Looks where the keys come from; may ask the user to unlock the keyring.
    Q_INVOKABLE void refresh();
    /// Saves the key of a row; a blank one, or a row that is not there, does nothing.
    Q_INVOKABLE void save(int row, const QString& key);
    /// Removes the saved key of a row.
    Q_INVOKABLE void remove(int row);

Q_SIGNALS:
    void busyChanged();

private:
    Task<void> followRefresh();
    Task<void> followSaving(std::size_t row, QString key);
    Task<void> followRemoval(std::size_t row);
    bool begin(int row);
    void end(std::size_t row, const QString& problem);
    void show(const std::vector<KeyRow>& rows);

    AppModel& m_app;
    std::vector<KeyRow> m_rows;
    bool m_busy = false;
    // Last, so that they are gone before anything they use.
    Task<void> m_reading;
    Task<void> m_writing;
};

} // namespace varnel
