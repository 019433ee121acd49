#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <vector>

namespace varnel::practice {

/// What a practice model does when it is asked something.
enum class Behaviour {
    Chat,      ///< short prose that quotes the prompt
    Thinking,  ///< thinks aloud first
    Markdown,  ///< a long tour of what Markdown can show
    Code,      ///< several fenced blocks
    Project,   ///< several files in fences that carry a path
    Tools,     ///< asks for a web tool, then answers with what it got
    Long,      ///< several thousand words
    Vision,    ///< says which images arrived
    Drop,      ///< breaks the connection in mid-reply
    Cut,       ///< closes the connection within a line; with the tag "ended" the body is properly ended there
    Stall,     ///< falls silent in mid-reply and stays so
    Fail,      ///< reports an error in mid-reply
    Slow,      ///< takes long to begin and goes on slowly
    Empty,     ///< is done without a word
    Flood,     ///< as many pieces as the tag says, as fast as they can be sent
    Paced,     ///< as many pieces a second as the tag says, for five seconds, each with the time it was sent
    HtmlError, ///< answers with a page and the status 502
    Busy,      ///< answers with the status 503
};

struct PracticeModel
{
    /// With its tag, for example "practice-chat:70b".
    QString name;
    Behaviour behaviour = Behaviour::Chat;
    QString family;
    QString parameterSize;
    /// In bytes.
    qint64 size = 0;
    bool takesTools = true;

    bool operator==(const PracticeModel&) const = default;

    /// 64 hexadecimal digits, the same for every model of that name.
    QString digest() const;
    /// An entry of the list of installed models.
    QJsonObject toTag() const;
    /// An entry of the list of loaded models.
    QJsonObject toRunning() const;
};

/// A model of the practice library: what a search finds and a pull can fetch.
struct LibraryModel
{
    QString name;
    QString summary;
    QStringList sizes;

    bool operator==(const LibraryModel&) const = default;
};

/// The part of a model's name before and after its colon; the tag is empty without one.
QString baseName(const QString& name);
QString tagOf(const QString& name);

/// The models that are installed when the host starts.
std::vector<PracticeModel> practiceModels();
const std::vector<LibraryModel>& practiceLibrary();

/// The installed models, in the order of the list that clients see.
class ModelShelf
{
public:
    const std::vector<PracticeModel>& models() const noexcept { return m_models; }
    /// The model of exactly that name or else the first with the same name before the colon, because the tag
    /// is only a number for some models; null if there is none. Valid until the shelf changes.
    const PracticeModel* find(const QString& name) const;
    /// Whether a model of that name can be pulled.
    static bool canPull(const QString& name);
    /// Installs the model with that name; no change if it is installed.
    void install(const QString& name);
    /// Whether there was a model to remove.
    bool remove(const QString& name);

private:
    std::vector<PracticeModel> m_models = practiceModels();
};

} // namespace varnel::practice
