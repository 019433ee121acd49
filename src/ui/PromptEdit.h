#pragma once

#include "engine/AppModel.h"
#include "ui/EngineObjects.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <map>

namespace varnel {

/// The editing of a prompt that was sent already. It stands in the composer instead of the draft, which waits
/// untouched, until it is sent again, goes on in a new conversation, or is given up. Each conversation has
/// its own.
class PromptEdit : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool active READ active NOTIFY changed)
    Q_PROPERTY(QString sendLabel READ sendLabel NOTIFY changed)

public:
    /// The model outlives the object.
    explicit PromptEdit(AppModel& app, QObject* parent = nullptr);
    static PromptEdit* create(QQmlEngine* engine, QJSEngine*) { return provided<PromptEdit>(engine); }

    /// Begins to edit a prompt of the selected conversation; any other message does nothing.
    Q_INVOKABLE void begin(const QUuid& message);
    /// Begins to edit the last prompt of the selected conversation; whether there was one.
    Q_INVOKABLE bool beginLast();
    /// Replaces the prompt and what follows it, and sends it. It stays open when that is refused, which the
    /// status says.
    Q_INVOKABLE void sendAgain();
    /// Goes on with the edited prompt in a new conversation.
    Q_INVOKABLE void fork();
    Q_INVOKABLE void cancel();

    /// Whether a prompt of the selected conversation is being edited.
    bool active() const { return m_edits.contains(m_app.selection()); }
    /// The text as it was edited so far; empty unless active.
    QString text() const;
    void setText(const QString& text);
    /// What sending again is called, with how many messages it removes.
    QString sendLabel() const;

Q_SIGNALS:
    /// An edit began or ended, or another conversation was chosen.
    void changed();
    void textChanged();

private:
    struct Edit
    {
        QUuid message;
        QString text;
    };

    void end(const QUuid& session);
    void forgetLost(const QUuid& session);

    AppModel& m_app;
    std::map<QUuid, Edit> m_edits; // by conversation
};

} // namespace varnel
