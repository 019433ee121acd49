#pragma once

#include "engine/AppModel.h"
#include "ui/EngineObjects.h"

#include <QObject>
#include <QUrl>
#include <QUuid>
#include <QtQml/qqmlregistration.h>

namespace varnel {

/// Conversations and replies on their way into files, and back: what is to be written is asked for first,
/// then the screens ask where, then it happens. The status says what became of it.
class ExportFlow : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QUrl suggestedFile READ suggestedFile NOTIFY fileWanted)
    Q_PROPERTY(QString filter READ filter NOTIFY fileWanted)
    Q_PROPERTY(bool withThinking MEMBER m_withThinking NOTIFY withThinkingChanged)

public:
    enum Form { Markdown, Pdf, Json };
    Q_ENUM(Form)

    /// The model outlives the flow.
    explicit ExportFlow(AppModel& app, QObject* parent = nullptr);
    static ExportFlow* create(QQmlEngine* engine, QJSEngine*) { return provided<ExportFlow>(engine); }

    /// Where what was asked for would be saved: in the user's documents folder, named after the conversation.
    const QUrl& suggestedFile() const { return m_suggestedFile; }
    /// The kind of file, as a dialog lists it.
    const QString& filter() const { return m_filter; }

    /// Asks where to save a conversation.
    Q_INVOKABLE void exportConversation(const QString& id, varnel::ExportFlow::Form form);
    Q_INVOKABLE void exportCurrent(varnel::ExportFlow::Form form);
    /// Asks where to save a message of the conversation that is shown.
    Q_INVOKABLE void saveMessage(const QString& id);
    /// Saves to a file what was asked for last; once. What is no file of this computer changes nothing.
    Q_INVOKABLE void save(const QUrl& file);
    /// Adds the conversation of a file that was exported as JSON.
    Q_INVOKABLE void importConversation(const QUrl& file);

Q_SIGNALS:
    void withThinkingChanged();
    /// A file to save to is to be chosen.
    void fileWanted();

private:
    struct Wanted
    {
        QUuid session;
        QUuid message; ///< null for the whole conversation
        Form form = Markdown;
    };

    void ask(Wanted wanted);
    void savePdf(const ChatSession& session, const QString& file);

    AppModel& m_app;
    std::optional<Wanted> m_wanted;
    QUrl m_suggestedFile;
    QString m_filter;
    bool m_withThinking = false; ///< whether documents show what the models thought
};

/// A name for a file made of a title: no longer than a file system takes, without what one would trip over.
QString fileNameOf(const QString& title);

} // namespace varnel
