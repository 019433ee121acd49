#include "ui/ConversationSettings.h"

#include "store/PreferenceTable.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace varnel {

static_assert(static_cast<int>(ConversationSettings::Search::Provider) ==
              static_cast<int>(SearchSource::Provider));
static_assert(static_cast<int>(ConversationSettings::Work::Vision) == static_cast<int>(WorkContext::Vision));
static_assert(ConversationSettings::highestTemperature == preferences::temperature.highest);
static_assert(ConversationSettings::lowestContextLength == preferences::contextLength.lowest);
static_assert(ConversationSettings::highestContextLength == preferences::contextLength.highest);

ConversationSettings::ConversationSettings(AppModel& app, QObject* parent)
    : QObject(parent)
    , m_app(app)
    , m_usual(app.newSettings())
{
    connect(&app, &AppModel::selectedSessionChanged, this, &ConversationSettings::changed);
    connect(&app, &AppModel::workContextChanged, this, &ConversationSettings::workChanged);
}

const ChatSession& ConversationSettings::settings() const
{
    const ChatSession* const selected = m_app.selectedSession();
    return selected ? *selected : m_usual;
}

void ConversationSettings::setSearch(Search search)
{
    m_app.setSearch(static_cast<SearchSource>(search));
}

QString ConversationSettings::searchLabel() const
{
    switch (search()) {
    case Search::Ollama:
        return QStringLiteral("Ollama");
    case Search::Brave:
        return QStringLiteral("Brave");
    case Search::Provider:
        return settings().answerBackend == AnswerBackend::Remote ? displayName(settings().remoteProvider)
                                                                 : tr("Own");
    case Search::Off:
        break;
    }
    return {};
}

QString ConversationSettings::providerSearchLabel() const
{
    const ChatSession& conversation = settings();
    return conversation.answerBackend == AnswerBackend::Remote && hasOwnSearch(conversation.remoteProvider)
               ? tr("%1 search").arg(displayName(conversation.remoteProvider))
               : tr("The model’s own search");
}

QString ConversationSettings::providerSearchDetail() const
{
    const ChatSession& conversation = settings();
    return conversation.answerBackend == AnswerBackend::Remote && hasOwnSearch(conversation.remoteProvider)
               ? tr("%1 searches by itself, with its own key").arg(displayName(conversation.remoteProvider))
               : tr("It has none: Ollama’s service or Brave Search stands in");
}

QString ConversationSettings::projectName() const
{
    constexpr qsizetype longest = 100;
    const std::optional<QUrl> folder = settings().projectURL();
    if (!folder)
        return {};
    const QString path = folder->adjusted(QUrl::StripTrailingSlash).toLocalFile();
    const QString name = QFileInfo(path).fileName();
    return (name.isEmpty() ? path : name).left(longest);
}

QString ConversationSettings::projectPath() const
{
    constexpr qsizetype longest = 1000;
    return settings().projectPath.left(longest);
}

void ConversationSettings::chooseProject(const QUrl& folder, const QUuid& session)
{
    if (folder.isLocalFile())
        m_app.setProjectPath(folder.toLocalFile(), session);
}

void ConversationSettings::clearProject()
{
    m_app.setProjectPath(QString());
}

void ConversationSettings::setTemperature(double temperature)
{
    // Two digits are all that is shown.
    const double wanted = std::clamp(std::round(temperature * 100) / 100, 0.0, highestTemperature);
    m_app.changeSettings([wanted](ChatSession& session) { session.temperature = wanted; });
}

void ConversationSettings::setContextLength(int tokens)
{
    const int wanted = std::clamp(tokens, lowestContextLength, highestContextLength);
    m_app.changeSettings([wanted](ChatSession& session) { session.contextLength = wanted; });
}

bool ConversationSettings::setKeepAlive(const QString& text)
{
    static const QRegularExpression duration(
        QStringLiteral(R"(^(0|[+-]?(\d{1,9}(\.\d{0,9})?(ns|us|ms|s|m|h))+)$)"));
    const QString wanted = text.trimmed();
    if (!duration.match(wanted).hasMatch())
        return false;
    m_app.changeSettings([&wanted](ChatSession& session) { session.keepAlive = wanted; });
    return true;
}

void ConversationSettings::setSystemPromptOf(const QUuid& session, const QString& prompt)
{
    m_app.changeSettings(session, [&prompt](ChatSession& session) { session.systemPrompt = prompt; });
}

ConversationSettings::Work ConversationSettings::work() const
{
    return m_app.workContext() ? static_cast<Work>(*m_app.workContext()) : Work::None;
}

QString ConversationSettings::workLabel() const
{
    return m_app.workContext() ? title(*m_app.workContext()) : QString();
}

void ConversationSettings::chooseWork(Work work)
{
    if (work != Work::None)
        m_app.chooseWorkContext(static_cast<WorkContext>(work));
}

} // namespace varnel
