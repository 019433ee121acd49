#pragma once

#include "engine/AppModel.h"
#include "ui/EngineObjects.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

namespace varnel {

/// What a search of the public library of models found.
class LibraryHitList : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(QString pullLine READ pullLine NOTIFY pullLineChanged)

public:
    enum Role { NameRole = Qt::UserRole, SummaryRole, InstalledRole };

    /// The model outlives the list.
    explicit LibraryHitList(AppModel& app, QObject* parent = nullptr);
    static LibraryHitList* create(QQmlEngine* engine, QJSEngine*) { return provided<LibraryHitList>(engine); }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    int count() const { return static_cast<int>(m_app.libraryHits().size()); }
    /// What is said of a search, a pull or a removal, in one line of bounded length.
    QString pullLine() const;
    /// Pulls the model of a row; a row that is not there does nothing.
    Q_INVOKABLE void pull(int row);

Q_SIGNALS:
    void countChanged();
    void pullLineChanged();

private:
    bool isInstalled(const QString& name) const;

    AppModel& m_app;
};

} // namespace varnel
