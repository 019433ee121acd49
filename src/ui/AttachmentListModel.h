#pragma once

#include "base/Task.h"
#include "base/Worker.h"
#include "engine/AppModel.h"
#include "ui/EngineObjects.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <vector>

namespace varnel {

/// An attachment of the message that is being written.
struct AttachmentRow
{
    QUuid id;
    QString title;
    /// The name of the drawing that stands for its kind.
    QString drawing;
    /// Why the model cannot read it; empty if it can.
    QString reason;
    /// It is a text that was pasted and can be put into the message again.
    bool pasted = false;

    bool operator==(const AttachmentRow&) const = default;
};

/// What goes along with the next message of the selected conversation, in the order it was attached.
class AttachmentListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { TitleRole = Qt::UserRole, DrawingRole, ReasonRole, PastedRole };

    /// The model outlives the list.
    explicit AttachmentListModel(AppModel& app, QObject* parent = nullptr);
    static AttachmentListModel* create(QQmlEngine* engine, QJSEngine*)
    {
        return provided<AttachmentListModel>(engine);
    }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    int count() const { return static_cast<int>(m_rows.size()); }
    /// Takes an attachment off the message; it stays in the library. A row that is not there does nothing.
    Q_INVOKABLE void remove(int row);
    /// Puts a pasted text into the message, below what is there, and deletes its item.
    Q_INVOKABLE void showInText(int row);

Q_SIGNALS:
    void countChanged();
    /// The user took one off, or into the text.
    void taken();

private:
    void refresh();
    Task<void> followText(QUuid item, QUuid session);

    AppModel& m_app;
    std::vector<AttachmentRow> m_rows;
    Worker m_worker;
    Task<void> m_reading;
};

} // namespace varnel
