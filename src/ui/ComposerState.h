#pragma once

#include "engine/AppModel.h"
#include "ui/EngineObjects.h"

#include <QObject>
#include <QUuid>
#include <QtQml/qqmlregistration.h>

#include <map>

namespace varnel {

/// What the composer and the line above it know beyond the draft.
class ComposerState : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool canSend READ canSend NOTIFY canSendChanged)
    Q_PROPERTY(QString statusLine READ statusLine NOTIFY statusLineChanged)

public:
    /// The model outlives the object.
    explicit ComposerState(AppModel& app, QObject* parent = nullptr);
    static ComposerState* create(QQmlEngine* engine, QJSEngine*) { return provided<ComposerState>(engine); }

    /// Whether there is something to send and nothing is being answered.
    bool canSend() const { return m_canSend; }

    /// The status as one line that can be shown, whatever a server put into it.
    QString statusLine() const;

    /// Where the cursor stood in the draft of the selected conversation; its end if it was never there.
    Q_INVOKABLE int cursor() const;
    Q_INVOKABLE void rememberCursor(int position);
    /// Brings the last prompt of the selected conversation back into its empty draft; whether there was one.
    /// One that failed is taken back, so that it is not there twice.
    Q_INVOKABLE bool editLastPrompt();

Q_SIGNALS:
    void canSendChanged();
    void statusLineChanged();

private:
    void updateCanSend();

    AppModel& m_app;
    std::map<QUuid, int> m_cursors;
    bool m_canSend = false;
};

} // namespace varnel
