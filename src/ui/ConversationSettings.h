#pragma once

#include "engine/AppModel.h"
#include "ui/EngineObjects.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace varnel {

/// The settings that the selected conversation is held with, as the composer's row shows and changes them.
class ConversationSettings : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(Search search READ search WRITE setSearch NOTIFY changed)
    Q_PROPERTY(QString searchLabel READ searchLabel NOTIFY changed)
    Q_PROPERTY(QString providerSearchLabel READ providerSearchLabel NOTIFY changed)
    Q_PROPERTY(QString providerSearchDetail READ providerSearchDetail NOTIFY changed)
    Q_PROPERTY(QString projectName READ projectName NOTIFY changed)
    Q_PROPERTY(QString projectPath READ projectPath NOTIFY changed)
    Q_PROPERTY(double temperature READ temperature WRITE setTemperature NOTIFY changed)
    Q_PROPERTY(int contextLength READ contextLength WRITE setContextLength NOTIFY changed)
    Q_PROPERTY(QString keepAlive READ keepAlive NOTIFY changed)
    Q_PROPERTY(QString systemPrompt READ systemPrompt WRITE setSystemPrompt NOTIFY changed)
    Q_PROPERTY(bool temperatureIsUsual READ temperatureIsUsual NOTIFY changed)
    Q_PROPERTY(bool contextLengthIsUsual READ contextLengthIsUsual NOTIFY changed)
    Q_PROPERTY(bool keepAliveIsUsual READ keepAliveIsUsual NOTIFY changed)
    Q_PROPERTY(bool systemPromptIsUsual READ systemPromptIsUsual NOTIFY changed)
    Q_PROPERTY(Work work READ work NOTIFY workChanged)
    Q_PROPERTY(QString workLabel READ workLabel NOTIFY workChanged)

public:
    /// As SearchSource.
    enum class Search { Off, Ollama, Brave, Provider };
    Q_ENUM(Search)
    /// As WorkContext, and none chosen.
    enum class Work { None = -1, Chat, Coding, Reasoning, Vision };
    Q_ENUM(Work)

    static constexpr double highestTemperature = 2;
    static constexpr int lowestContextLength = 512;
    static constexpr int highestContextLength = 131072;

    /// The model outlives the object.
    explicit ConversationSettings(AppModel& app, QObject* parent = nullptr);
    static ConversationSettings* create(QQmlEngine* engine, QJSEngine*)
    {
        return provided<ConversationSettings>(engine);
    }

    Search search() const { return static_cast<Search>(settings().search); }
    void setSearch(Search search);
    /// The source that is chosen, in a word; empty when there is no search.
    QString searchLabel() const;
    /// What the model's own search is called, and where its queries go.
    QString providerSearchLabel() const;
    QString providerSearchDetail() const;

    /// The last part of the project folder's path; empty when there is none.
    QString projectName() const;
    QString projectPath() const;
    Q_INVOKABLE void chooseProject(const QUrl& folder, const QUuid& session);
    Q_INVOKABLE void clearProject();

    /// Values outside the range become its nearest end.
    double temperature() const { return settings().temperature; }
    void setTemperature(double temperature);
    int contextLength() const { return static_cast<int>(settings().contextLength); }
    void setContextLength(int tokens);
    QString keepAlive() const { return settings().keepAlive; }
    /// Takes a time as Ollama spells it, such as "5m"; whether the text is one. It is left alone if not.
    Q_INVOKABLE bool setKeepAlive(const QString& text);
    QString systemPrompt() const { return settings().systemPrompt; }
    void setSystemPrompt(const QString& prompt) { setSystemPromptOf(m_app.selection(), prompt); }
    /// Of the conversation for which it was written, whichever is shown by now.
    Q_INVOKABLE void setSystemPromptOf(const QUuid& session, const QString& prompt);

    /// Whether it is as in a new conversation, and making it so.
    bool temperatureIsUsual() const { return temperature() == m_usual.temperature; }
    bool contextLengthIsUsual() const { return settings().contextLength == m_usual.contextLength; }
    bool keepAliveIsUsual() const { return keepAlive() == m_usual.keepAlive; }
    bool systemPromptIsUsual() const { return systemPrompt() == m_usual.systemPrompt; }
    Q_INVOKABLE void resetTemperature() { setTemperature(m_usual.temperature); }
    Q_INVOKABLE void resetContextLength() { setContextLength(static_cast<int>(m_usual.contextLength)); }
    Q_INVOKABLE void resetKeepAlive() { setKeepAlive(m_usual.keepAlive); }
    Q_INVOKABLE void resetSystemPrompt() { setSystemPrompt(m_usual.systemPrompt); }

    Work work() const;
    QString workLabel() const;
    /// Switches to the model that suits a kind of work best.
    Q_INVOKABLE void chooseWork(Work work);

Q_SIGNALS:
    void changed();
    void workChanged();

private:
    const ChatSession& settings() const;

    AppModel& m_app;
    ChatSession m_usual;
};

} // namespace varnel
