#pragma once

#include "engine/AppModel.h"
#include "ui/EngineObjects.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace varnel {

struct Backup;

/// The backups of the data folder, the newest first, and where that folder is.
class BackupListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(QString locationText READ locationText CONSTANT)
    Q_PROPERTY(QString folder READ folder CONSTANT)
    Q_PROPERTY(QString report READ report NOTIFY reportChanged)

public:
    enum Role { NameRole = Qt::UserRole, TimeRole };

    /// The model outlives the list.
    explicit BackupListModel(AppModel& app, QObject* parent = nullptr);
    ~BackupListModel() override;
    BackupListModel(const BackupListModel&) = delete;
    BackupListModel& operator=(const BackupListModel&) = delete;
    BackupListModel(BackupListModel&&) = delete;
    BackupListModel& operator=(BackupListModel&&) = delete;
    static BackupListModel* create(QQmlEngine* engine, QJSEngine*)
    {
        return provided<BackupListModel>(engine);
    }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    int count() const { return static_cast<int>(m_backups.size()); }
    QString locationText() const;
    QString folder() const { return m_app.location().folder(); }

    /// What became of the backup that was made or restored last; empty at first.
    const QString& report() const { return m_report; }

    /// Forgets the report and looks which backups there are. Until the first look there are none, and nothing
    /// on the disk is touched.
    Q_INVOKABLE void begin();
    Q_INVOKABLE void revealLibrary() const;
    Q_INVOKABLE void revealBackups() const;
    /// Takes a backup in place of what there is; a row that is not there does nothing.
    Q_INVOKABLE void restore(int row);

Q_SIGNALS:
    void countChanged();
    void reportChanged();

private:
    void refresh();
    void setReport(const QString& text);

    AppModel& m_app;
    std::vector<Backup> m_backups;
    QString m_report;
};

} // namespace varnel
