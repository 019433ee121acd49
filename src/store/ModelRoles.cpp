#include "store/ModelRoles.h"

#include <algorithm>
#include <array>

namespace varnel {

namespace {

constexpr std::array codingWords{QLatin1String("coder"),     QLatin1String("codestral"),
                                 QLatin1String("starcoder"), QLatin1String("codellama"),
                                 QLatin1String("devstral"),  QLatin1String("-code"),
                                 QLatin1String("code-")};
constexpr std::array reasoningWords{QLatin1String("qwq"), QLatin1String("reason"), QLatin1String("thinking")};
constexpr std::array visionWords{QLatin1String("vision"), QLatin1String("llava"), QLatin1String("moondream"),
                                 QLatin1String("-vl"),    QLatin1String("vl"),    QLatin1String("minicpm-v")};

template <std::size_t Count>
bool holdsAny(const QString& lowerName, const std::array<QLatin1String, Count>& words)
{
    return std::ranges::any_of(words, [&lowerName](QLatin1String word) { return lowerName.contains(word); });
}

bool isDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

bool isWordCharacter(QChar character)
{
    return isDigit(character) || (character >= QLatin1Char('a') && character <= QLatin1Char('z'));
}

/// Whether "r1" stands in the name with no letter or digit on either side.
bool holdsR1(const QString& lowerName)
{
    constexpr qsizetype length = 2;
    for (qsizetype at = lowerName.indexOf(QLatin1String("r1")); at >= 0;
         at = lowerName.indexOf(QLatin1String("r1"), at + length)) {
        const qsizetype end = at + length;
        if ((at == 0 || !isWordCharacter(lowerName[at - 1])) &&
            (end == lowerName.size() || !isWordCharacter(lowerName[end])))
            return true;
    }
    return false;
}

qsizetype skipDigits(QStringView text, qsizetype at)
{
    while (at < text.size() && isDigit(text[at]))
        ++at;
    return at;
}

double score(WorkContext context, const OllamaModel& model)
{
    // More than any model has, so that each one that suits comes before all that do not.
    constexpr double bonus = 1000;
    return modelSize(model) + (suits(context, model.name) ? bonus : 0);
}

} // namespace

bool isCodingModel(const QString& name)
{
    return holdsAny(name.toLower(), codingWords);
}

bool isReasoningModel(const QString& name)
{
    const QString lowerName = name.toLower();
    return holdsAny(lowerName, reasoningWords) || holdsR1(lowerName);
}

bool isVisionModel(const QString& name)
{
    return holdsAny(name.toLower(), visionWords);
}

bool suits(WorkContext context, const QString& name)
{
    switch (context) {
    case WorkContext::Chat:
        return !isCodingModel(name) && !isReasoningModel(name);
    case WorkContext::Coding:
        return isCodingModel(name);
    case WorkContext::Reasoning:
        return isReasoningModel(name);
    case WorkContext::Vision:
        return isVisionModel(name);
    }
    return false;
}

std::optional<double> parameterCount(QStringView text)
{
    // Names come from a server and may be of any length: no character is looked at more than twice.
    for (qsizetype start = 0; start < text.size(); ++start) {
        if (!isDigit(text[start]))
            continue;
        const qsizetype wholeEnd = skipDigits(text, start);
        qsizetype end = wholeEnd;
        if (end + 1 < text.size() && text[end] == QLatin1Char('.') && isDigit(text[end + 1]))
            end = skipDigits(text, end + 1);
        qsizetype unit = end;
        while (unit < text.size() && text[unit].isSpace())
            ++unit;
        const QChar letter = unit < text.size() ? text[unit].toLower() : QChar();
        if (letter != QLatin1Char('b') && letter != QLatin1Char('m')) {
            start = wholeEnd - 1; // "1.2.3b" holds 2.3
            continue;
        }
        bool converted = false;
        const double number = text.sliced(start, end - start).toDouble(&converted);
        if (!converted)
            return std::nullopt;
        constexpr double smallestMillions = 100;
        constexpr double millionsPerBillion = 1000;
        return letter == QLatin1Char('m') && number >= smallestMillions ? number / millionsPerBillion
                                                                        : number;
    }
    return std::nullopt;
}

double modelSize(const OllamaModel& model)
{
    if (model.parameterSize) {
        if (const std::optional<double> count = parameterCount(*model.parameterSize))
            return *count;
    }
    return parameterCount(model.name).value_or(0);
}

std::optional<BestModel> bestModel(WorkContext context, const std::vector<OllamaModel>& installed)
{
    // The first of equal ones, as max_element has it.
    const auto best = std::ranges::max_element(
        installed, {}, [context](const OllamaModel& model) { return score(context, model); });
    if (best == installed.end())
        return std::nullopt;
    return BestModel{.name = best->name, .suited = suits(context, best->name)};
}

QString workContextStatus(WorkContext context, const std::optional<BestModel>& best)
{
    if (!best)
        return QStringLiteral("No models are installed on this host.");
    if (best->suited)
        return title(context) + QStringLiteral(" · ") + best->name;
    return QStringLiteral("No ") + title(context).toLower() + QStringLiteral(" model is installed. Using ") +
           best->name + QLatin1Char('.');
}

} // namespace varnel
