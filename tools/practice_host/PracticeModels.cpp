#include "practice_host/PracticeModels.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QJsonArray>

#include <algorithm>

namespace varnel::practice {

namespace {

constexpr qint64 gigabyte = 1'000'000'000;

/// Seconds from now as the server writes times.
QString timeFromNow(qint64 seconds)
{
    return QDateTime::currentDateTimeUtc().addSecs(seconds).toString(Qt::ISODateWithMs);
}

QJsonObject details(const PracticeModel& model)
{
    return {{QStringLiteral("parent_model"), QString()},
            {QStringLiteral("format"), QStringLiteral("gguf")},
            {QStringLiteral("family"), model.family},
            {QStringLiteral("families"), QJsonArray{model.family}},
            {QStringLiteral("parameter_size"), model.parameterSize},
            {QStringLiteral("quantization_level"), QStringLiteral("Q4_K_M")}};
}

} // namespace

QString PracticeModel::digest() const
{
    return QString::fromLatin1(QCryptographicHash::hash(name.toUtf8(), QCryptographicHash::Sha256).toHex());
}

QJsonObject PracticeModel::toTag() const
{
    constexpr qint64 aWeek = -7LL * 24 * 3600;
    return {{QStringLiteral("name"), name},
            {QStringLiteral("model"), name},
            {QStringLiteral("modified_at"), timeFromNow(aWeek)},
            {QStringLiteral("size"), size},
            {QStringLiteral("digest"), digest()},
            {QStringLiteral("details"), details(*this)}};
}

QJsonObject PracticeModel::toRunning() const
{
    constexpr qint64 fiveMinutes = 300;
    return {{QStringLiteral("name"), name},
            {QStringLiteral("model"), name},
            {QStringLiteral("size"), size},
            {QStringLiteral("size_vram"), size},
            {QStringLiteral("digest"), digest()},
            {QStringLiteral("details"), details(*this)},
            {QStringLiteral("expires_at"), timeFromNow(fiveMinutes)}};
}

QString baseName(const QString& name)
{
    return name.section(QLatin1Char(':'), 0, 0);
}

QString tagOf(const QString& name)
{
    return name.section(QLatin1Char(':'), 1);
}

std::vector<PracticeModel> practiceModels()
{
    const auto model = [](const char* name, Behaviour behaviour, const char* family, const char* parameters,
                          qint64 size, bool takesTools = true) {
        return PracticeModel{.name = QString::fromLatin1(name),
                             .behaviour = behaviour,
                             .family = QString::fromLatin1(family),
                             .parameterSize = QString::fromLatin1(parameters),
                             .size = size,
                             .takesTools = takesTools};
    };
    using enum Behaviour;
    return {
        model("practice-chat:70b", Chat, "llama", "70.6B", 42 * gigabyte),
        model("practice-thinking:14b", Thinking, "qwen3", "14.8B", 9 * gigabyte),
        model("practice-markdown:8b", Markdown, "llama", "8.0B", 5 * gigabyte),
        model("practice-code:32b", Code, "qwen2", "32.8B", 20 * gigabyte),
        model("practice-project:24b", Project, "mistral", "23.6B", 14 * gigabyte),
        model("practice-tools:8b", Tools, "qwen3", "8.2B", 5 * gigabyte),
        model("practice-long:4b", Long, "gemma3", "4.3B", 3 * gigabyte),
        model("practice-vision:11b", Vision, "mllama", "10.7B", 8 * gigabyte, false),
        model("practice-drop:1b", Drop, "llama", "1.2B", gigabyte),
        model("practice-cut:1b", Cut, "llama", "1.2B", gigabyte),
        model("practice-stall:1b", Stall, "llama", "1.2B", gigabyte),
        model("practice-error:1b", Fail, "llama", "1.2B", gigabyte),
        model("practice-slow:1b", Slow, "llama", "1.2B", gigabyte),
        model("practice-empty:1b", Empty, "llama", "1.2B", gigabyte),
        model("practice-flood:100000", Flood, "llama", "135M", gigabyte / 4),
        model("practice-paced:1000", Paced, "llama", "135M", gigabyte / 4),
        model("practice-html:1b", HtmlError, "llama", "1.2B", gigabyte),
        model("practice-busy:1b", Busy, "llama", "1.2B", gigabyte),
    };
}

const std::vector<LibraryModel>& practiceLibrary()
{
    const auto model = [](const char* name, const char* summary, const char* sizes) {
        return LibraryModel{QString::fromLatin1(name), QString::fromLatin1(summary),
                            QString::fromLatin1(sizes).split(QLatin1Char(' '), Qt::SkipEmptyParts)};
    };
    static const std::vector<LibraryModel> library = {
        model("practice-chat", "Practice only: quotes what you wrote & says that it is no model.", "8b 70b"),
        model("practice-reader", "Practice only: a \"reading\" model to pull, remove and pull again.",
              "0.6b 1.5b 7b"),
        model("practice-thinking", "Practice only: thinks aloud before it answers.", "14b 30b"),
        model("practice-code", "Practice only: answers with code in several languages.", "7b 32b"),
        model("practice-project", "Practice only: answers with a project's files.", "24b"),
        model("practice-markdown", "Practice only: headings, lists, tables, quotes & formulas.", "8b"),
        model("practice-tools", "Practice only: asks for a web search, then answers.", "8b"),
        model("practice-vision", "Practice only: counts the images that it's shown.", "11b 90b"),
        model("practice-long", "Practice only: several thousand words.", "4b"),
        model("practice-embed", "Practice only: a model whose card names no size.", ""),
    };
    return library;
}

const PracticeModel* ModelShelf::find(const QString& name) const
{
    const auto exact = std::find_if(m_models.begin(), m_models.end(),
                                    [&name](const PracticeModel& model) { return model.name == name; });
    if (exact != m_models.end())
        return &*exact;
    const auto similar = std::find_if(m_models.begin(), m_models.end(), [&name](const PracticeModel& model) {
        return baseName(model.name) == baseName(name);
    });
    return similar == m_models.end() ? nullptr : &*similar;
}

bool ModelShelf::canPull(const QString& name)
{
    const std::vector<LibraryModel>& library = practiceLibrary();
    const QString base = baseName(name);
    return std::any_of(library.begin(), library.end(),
                       [&base](const LibraryModel& model) { return model.name == base; });
}

void ModelShelf::install(const QString& name)
{
    const QString tag = tagOf(name);
    const QString fullName = tag.isEmpty() ? name + QStringLiteral(":latest") : name;
    const auto sameName = [&fullName](const PracticeModel& model) { return model.name == fullName; };
    if (std::any_of(m_models.begin(), m_models.end(), sameName))
        return;
    PracticeModel added{.name = fullName,
                        .family = QStringLiteral("llama"),
                        .parameterSize = tag.isEmpty() ? QStringLiteral("8.0B") : tag.toUpper(),
                        .size = gigabyte};
    const std::vector<PracticeModel> known = practiceModels();
    const auto scripted = std::find_if(known.begin(), known.end(), [&fullName](const PracticeModel& model) {
        return baseName(model.name) == baseName(fullName);
    });
    if (scripted != known.end()) {
        added.behaviour = scripted->behaviour;
        added.takesTools = scripted->takesTools;
    }
    m_models.insert(m_models.begin(), added);
}

bool ModelShelf::remove(const QString& name)
{
    const QString latest = name + QStringLiteral(":latest");
    return std::erase_if(m_models, [&](const PracticeModel& model) {
               return model.name == name || model.name == latest;
           }) > 0;
}

} // namespace varnel::practice
