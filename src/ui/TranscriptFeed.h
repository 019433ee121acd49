#pragma once

#include "base/Clock.h"
#include "engine/AppModel.h"
#include "ui/EngineObjects.h"
#include "ui/transcript/TranscriptModel.h"

#include <QObject>
#include <QUuid>
#include <QtQml/qqmlregistration.h>

#include <functional>
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

    /// What stands before everything that sends a conversation once more; without one nothing does.
    using Consent = std::function<void(std::function<void()> action)>;
    void setConsent(Consent consent) { m_consent = std::move(consent); }

    /// Does what was asked for with a message of the conversation.
    /// @param action as TranscriptView::actionRequested() names it. What needs a sheet of its own is reported
    /// by one of the signals.
    Q_INVOKABLE void act(const QString& id, const QString& action);
    /// Asks to write the files of a reply, of which this one was pointed at.
    Q_INVOKABLE void writeFile(const QString& id, const QString& path);
    /// Asks for the answer to a failed prompt, or for an unfinished reply, once more.
    Q_INVOKABLE void tryAgain(const QString& id);
    /// The same for a failed prompt, with what made it fail changed.
    Q_INVOKABLE void turnSearchOffAndTryAgain();
    Q_INVOKABLE void resetTemperatureAndTryAgain();
    /// Goes on from a message in a new conversation.
    Q_INVOKABLE void fork(const QString& id);
    /// Shows the diagnostics log in the program that the desktop has for texts.
    Q_INVOKABLE void openLogs();
    /// Puts the Markdown of a message on the clipboard.
    Q_INVOKABLE void copyMessage(const QString& id);
    /// Puts the Markdown of the newest reply on the clipboard; whether there was one.
    Q_INVOKABLE bool copyLastReply();

Q_SIGNALS:
    /// A prompt is to be edited, the files of a reply to be written, a message to be saved.
    void editRequested(const QString& id);
    /// @param path the file that is meant first; empty for none in particular.
    void writeRequested(const QString& id, const QString& path);
    void saveRequested(const QString& id);
    /// What else can be done with a message is to be offered.
    void moreRequested(const QString& id);

private:
    using TimePoint = TranscriptMessage::TimePoint;

    struct Thinking
    {
        TimePoint since;
        std::optional<std::chrono::milliseconds> took;
    };

    TranscriptMessage describe(const ChatSession& session, const ChatMessage& message) const;
    void describePrompt(const ChatMessage& message, TranscriptMessage& shown) const;
    void describeReply(const ChatSession& session, const ChatMessage& message,
                       TranscriptMessage& shown) const;
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
    Consent m_consent = [](const std::function<void()>& action) { action(); };
    QUuid m_streaming;
    QUuid m_failedPrompt;
    QUuid m_last; ///< the message that is the last one
    TimePoint m_turnBegan;
    // Whether the list of loaded models is of this turn; an older one may have changed since.
    bool m_runningIsFresh = false;
    std::map<QUuid, Thinking> m_thinking;
};

} // namespace varnel
