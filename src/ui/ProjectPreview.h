#pragma once

#include "engine/AppModel.h"
#include "ui/DiffListModel.h"
#include "ui/EngineObjects.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

#include <set>
#include <vector>

namespace varnel {

/// The files of a reply before they are written into the project folder: what would become of each, which of
/// them are ticked, and how the current one differs from what is there.
class ProjectPreview : public QAbstractListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(varnel::DiffListModel* diff READ diff CONSTANT)
    Q_PROPERTY(int currentRow READ currentRow WRITE setCurrentRow NOTIFY currentRowChanged)
    Q_PROPERTY(QString currentNote READ currentNote NOTIFY currentRowChanged)
    Q_PROPERTY(int tickedCount READ tickedCount NOTIFY tickedChanged)
    Q_PROPERTY(QString folder READ folder NOTIFY contentsChanged)
    Q_PROPERTY(QString notice READ notice NOTIFY noticeChanged)
    Q_PROPERTY(bool canRestore READ canRestore NOTIFY canRestoreChanged)
    Q_PROPERTY(bool offersRestore READ offersRestore NOTIFY offersRestoreChanged)

public:
    enum Role { PathRole = Qt::UserRole, ChangeRole, StateRole, TickedRole, TickableRole };
    /// As ProjectFileChange.
    enum class Change { New, Changed, Unchanged, Refused };
    Q_ENUM(Change)

    /// The model outlives the object.
    explicit ProjectPreview(AppModel& app, QObject* parent = nullptr);
    static ProjectPreview* create(QQmlEngine* engine, QJSEngine*) { return provided<ProjectPreview>(engine); }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// Shows the files of a reply of the selected conversation, as soon as they were looked at. When it has
    /// none, or no folder is chosen, the status says so and nothing is shown.
    /// @param path the file that is the current one then; the first one if the reply has no such file.
    void show(const QUuid& message, const QString& path = {});
    /// The files are out of sight: what was asked to be written and is still looked at is not written.
    Q_INVOKABLE void dismiss();
    /// Ticks a file or takes the tick away; a file that cannot be written stays without.
    Q_INVOKABLE void setTicked(int row, bool ticked);
    /// Writes the files that are ticked, unless something of what is shown has changed since: then it shows
    /// that instead.
    Q_INVOKABLE void write();
    /// Puts back what the last writing overwrote.
    Q_INVOKABLE void restore();

    DiffListModel* diff() { return &m_diff; }
    int currentRow() const { return m_currentRow; }
    void setCurrentRow(int row);
    /// What is to be known of the current file beyond its lines; may be empty.
    QString currentNote() const;
    int tickedCount() const { return static_cast<int>(m_ticked.size()); }
    QString folder() const;
    /// Why nothing was written yet; empty at first.
    const QString& notice() const { return m_notice; }
    bool canRestore() const { return m_app.canRestoreProjectFiles(); }
    /// Whether something was overwritten a moment ago: until it is put back, declined, or the conversation
    /// goes on.
    bool offersRestore() const { return m_offersRestore; }
    Q_INVOKABLE void declineRestore() { setOffersRestore(false); }

Q_SIGNALS:
    /// There is something to look at.
    void shown();
    /// It was written.
    void written();
    void contentsChanged();
    void currentRowChanged();
    void tickedChanged();
    void noticeChanged();
    void canRestoreChanged();
    void offersRestoreChanged();

private:
    Task<void> followShow(QUuid message, QString path);
    Task<void> followWrite();
    /// Shows the files anew that were put back.
    Task<void> followRestore();
    /// Offers to put back what was overwritten, or shows the files anew that were.
    void noteFilesChanged();
    void setOffersRestore(bool offers);
    void take(std::vector<PlannedProjectFile> files);
    void compare();
    void setNotice(const QString& text);

    AppModel& m_app;
    QUuid m_session;
    QUuid m_message;
    std::vector<PlannedProjectFile> m_files; // each path once
    std::set<QString> m_ticked;              // paths
    DiffListModel m_diff;
    int m_currentRow = -1;
    QString m_notice;
    bool m_isOpen = false;
    bool m_isRestoring = false;
    bool m_isOverwriting = false;
    bool m_offersRestore = false;
    // What is asked of the model; whatever is asked for later takes its place.
    Task<void> m_task;
};

} // namespace varnel
