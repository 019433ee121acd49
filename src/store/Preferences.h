#pragma once

#include "providers/RemoteProvider.h"
#include "store/ConnectionSettings.h"
#include "store/ConversationKinds.h"
#include "store/PreferenceTable.h"

#include <QString>
#include <QVariant>

#include <memory>
#include <optional>
#include <set>

class QSettings;

namespace varnel {

/// The entry of a provider's model among the disabled ones.
QString providerModelEntry(RemoteProvider provider, const QString& model);

/// The small settings that belong to this computer rather than to a conversation.
///
/// Each reader looks at what is stored at that moment and answers with a value that can be used, whatever it
/// finds; each writer stores the value as it is given and throws Error when it could not be saved. A value
/// that could not be saved is still what the readers of this run answer, and is saved along with the next one
/// that can be.
class Preferences
{
public:
    /// The user's own preferences.
    Preferences();
    /// Preferences in an INI file of their own. The file is made by the first writer.
    explicit Preferences(const QString& file);
    Preferences(const Preferences&) = delete;
    Preferences& operator=(const Preferences&) = delete;
    Preferences(Preferences&&) = delete;
    Preferences& operator=(Preferences&&) = delete;
    ~Preferences();

    /// One line for the user when the file is there but could not be read: every reader then answers as if
    /// nothing were stored, and the next writer renames the file before it makes a new one.
    const std::optional<QString>& problem() const { return m_problem; }
    /// One line for the user when a connection is stored but cannot be used, so that connection() is the
    /// default.
    std::optional<QString> connectionProblem() const;

    ConnectionSettings connection() const;
    void setConnection(const ConnectionSettings& settings);

    /// The Ollama model of new conversations; never empty.
    QString defaultModel() const;
    void setDefaultModel(const QString& model);
    /// The sampling temperature of new conversations, 0 to 2.
    double temperature() const;
    void setTemperature(double temperature);
    /// The context length of new conversations, 512 to 131072 tokens.
    qint64 contextLength() const;
    void setContextLength(qint64 tokens);
    /// The keep-alive of new conversations in Ollama's spelling; never blank.
    QString keepAlive() const;
    void setKeepAlive(const QString& keepAlive);

    /// Whether conversations may be sent to cloud providers.
    bool passthrough() const;
    void setPassthrough(bool allowed);
    /// Whether the main screen shows the button for the kind of work.
    bool contextButton() const;
    void setContextButton(bool shown);
    /// The kind of work the user chose, if any.
    std::optional<WorkContext> workContext() const;
    void setWorkContext(WorkContext context);

    /// The provider models that the menus leave out, each as providerModelEntry() spells it.
    std::set<QString> disabledProviderModels() const;
    void setDisabledProviderModels(const std::set<QString>& entries);
    /// The provider of new conversations.
    RemoteProvider remoteProvider() const;
    void setRemoteProvider(RemoteProvider provider);
    /// The preferred model of the stored provider if its catalogue has it; otherwise, and for every other
    /// provider, the first of the catalogue.
    QString remoteModel(RemoteProvider provider) const;
    void setRemoteModel(const QString& model);

    /// Whether the first-run sheet has been finished.
    bool onboardingComplete() const;
    void setOnboardingComplete(bool complete);

private:
    QVariant stored(QLatin1String name) const;
    QString text(QLatin1String name) const;
    QString read(const preferences::TextPreference& row) const;
    double read(const preferences::NumberPreference& row) const;
    qint64 read(const preferences::IntegerPreference& row) const;
    bool read(const preferences::FlagPreference& row) const;
    std::optional<ConnectionSettings> storedConnection() const;

    void store(QLatin1String name, const QVariant& value);
    void store(QLatin1String name, const QString& text);
    void makeRoomForFile();

    QString m_file;
    std::optional<QString> m_problem;
    // Null while the file cannot be read.
    std::unique_ptr<QSettings> m_settings;
};

} // namespace varnel
