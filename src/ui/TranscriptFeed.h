#pragma once

#include "base/Clock.h"
#include "engine/AppModel.h"
#include "ui/EngineObjects.h"
#include "ui/transcript/TranscriptModel.h"

#include <QObject>
#include <QUuid>
#include <QtQml/qqmlregistration.h>

#include <map>

namespace varnel {

/// Keeps the transcript on the messages of the selected conversation. A piece of a reply costs one message's
/// update, however long the conversation is.
class TranscriptFeed : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(varnel::TranscriptModel* model READ model CONSTANT)

public:
    /// Both outlive the feed.
    TranscriptFeed(AppModel& app, const Clock& clock, QObject* parent = nullptr);
    static TranscriptFeed* create(QQmlEngine* engine, QJSEngine*) { return provided<TranscriptFeed>(engine); }

    TranscriptModel* model() { return &m_transcript; }

    /// Puts the Markdown of a message on the clipboard.
    Q_INVOKABLE void copyMessage(const QString& id);
    /// Puts the Markdown of the newest reply on the clipboard; whether there was one.
    Q_INVOKABLE bool copyLastReply();

private:
    using TimePoint = TranscriptMessage::TimePoint;

    struct Thinking
    {
        TimePoint since;
        std::optional<std::chrono::milliseconds> took;
    };

    TranscriptMessage describe(const ChatSession& session, const ChatMessage& message) const;
    QString footerOf(const ChatMessage& message) const;
    void rebuild();
    void takeMessages(const QUuid& session);
    void takeMessage(const QUuid& session, const QUuid& message);
    void takeStreaming();
    void takeFailure();
    void takeRunningModels();
    void noteThinking(const ChatMessage& message, bool streaming);
    /// Updates a message if it is one of the selected conversation.
    void show(const QUuid& message);

    AppModel& m_app;
    const Clock& m_clock;
    TranscriptModel m_transcript;
    QUuid m_streaming;
    QUuid m_failedPrompt;
    TimePoint m_turnBegan;
    // Whether the list of loaded models is of this turn; an older one may have changed since.
    bool m_runningIsFresh = false;
    std::map<QUuid, Thinking> m_thinking;
};

} // namespace varnel
