#include "store/Preferences.h"

#include "base/Error.h"
#include "base/JsonReader.h"
#include "base/JsonWriter.h"
#include "base/Text.h"
#include "store/FileAccess.h"
#include "store/HttpUrl.h"
#include "store/IniFile.h"
#include "store/PreferencesFile.h"

#include <algorithm>
#include <cmath>

namespace varnel {

namespace {

/// The number in a text. One too large for a double is an infinity; a text that is no number, or names
/// something that is not finite, is nothing.
std::optional<double> numberIn(const QString& text)
{
    bool isNumber = false;
    const double value = text.trimmed().toDouble(&isNumber);
    const bool tooLarge = !isNumber && std::isinf(value);
    if (tooLarge || (isNumber && std::isfinite(value)))
        return value;
    return std::nullopt;
}

/// An INI file holds true and false as text, and people write them in several ways.
std::optional<bool> flagIn(const QString& text)
{
    const QString word = text.trimmed().toLower();
    if (word == QLatin1String("true") || word == QLatin1String("1") || word == QLatin1String("yes"))
        return true;
    if (word == QLatin1String("false") || word == QLatin1String("0") || word == QLatin1String("no"))
        return false;
    return std::nullopt;
}

QByteArray prettyJson(const ConnectionSettings& settings)
{
    QByteArray text;
    JsonWriter writer(JsonWriter::Style::Pretty, [&text](std::string_view piece) {
        text.append(piece.data(), static_cast<qsizetype>(piece.size()));
    });
    writeConnectionSettings(writer, settings);
    writer.finish();
    return text;
}

} // namespace

QString providerModelEntry(RemoteProvider provider, const QString& model)
{
    return rawValue(provider) + QLatin1Char('\n') + model;
}

Preferences::Preferences()
    : Preferences(preferencesFile())
{}

Preferences::Preferences(const QString& file)
    : m_file(file)
{
    if (const auto reason = file.isEmpty() ? std::nullopt : whyNotIni(file)) {
        m_problem = QStringLiteral(
                        "The preferences in %1 cannot be read (%2). The defaults are used; the file will be "
                        "renamed, not overwritten, when a preference is saved.")
                        .arg(file, *reason);
        return;
    }
    m_settings = openPreferences(file);
}

Preferences::~Preferences() = default;

QVariant Preferences::stored(QLatin1String name) const
{
    if (!m_settings)
        return {};
    // Picks up what another process wrote; when nothing changed it only looks at the file's size and time.
    m_settings->sync();
    return m_settings->value(preferenceKey(name));
}

QString Preferences::text(QLatin1String name) const
{
    return wellFormed(stored(name).toString());
}

QString Preferences::read(const preferences::TextPreference& row) const
{
    using enum preferences::TextPreference::CountsAsAbsent;
    const QString value = text(row.name);
    const bool absent = row.absent == Blank ? value.trimmed().isEmpty() : value.isEmpty();
    return absent ? QString(row.fallback) : value;
}

double Preferences::read(const preferences::NumberPreference& row) const
{
    const double value = numberIn(text(row.name)).value_or(row.fallback);
    return value <= row.lowest ? row.lowest : std::min(value, row.highest); // so that -0 is the lowest, too
}

qint64 Preferences::read(const preferences::IntegerPreference& row) const
{
    // Through a double, which takes 8192.0 and any number of digits; every range is far within its whole
    // numbers.
    const double value = numberIn(text(row.name)).value_or(static_cast<double>(row.fallback));
    return static_cast<qint64>(
        std::clamp(value, static_cast<double>(row.lowest), static_cast<double>(row.highest)));
}

bool Preferences::read(const preferences::FlagPreference& row) const
{
    return flagIn(text(row.name)).value_or(row.fallback);
}

/// Nothing when none is stored; throws DecodeError when the stored one cannot be used.
std::optional<ConnectionSettings> Preferences::storedConnection() const
{
    const QVariant value = stored(preferences::connection.name);
    if (!value.isValid())
        return std::nullopt;
    const QByteArray json = value.toByteArray();
    JsonParser parser;
    return decodeConnectionSettings(parser.parse({json.constData(), static_cast<std::size_t>(json.size())}));
}

ConnectionSettings Preferences::connection() const
{
    try {
        return storedConnection().value_or(ConnectionSettings());
    } catch (const DecodeError&) {
        return {}; // connectionProblem() says why
    }
}

std::optional<QString> Preferences::connectionProblem() const
{
    try {
        const std::optional<ConnectionSettings> settings = storedConnection();
        if (settings && settings->mode == ConnectionMode::Direct &&
            !parseHttpUrl(settings->directURL.trimmed()))
            return QStringLiteral("The saved address \"%1\" is no http or https URL; %2 is used instead.")
                .arg(settings->directURL.trimmed(), settings->baseURL().toString());
        return std::nullopt;
    } catch (const DecodeError& error) {
        return error.introducedBy(QStringLiteral("The saved connection settings cannot be read.")).message();
    }
}

void Preferences::makeRoomForFile()
{
    if (m_file.isEmpty())
        return;
    if (whyNotIni(m_file)) {
        m_settings.reset();
        setAsideUnreadable(m_file);
    }
    createPrivateFile(m_file);
}

void Preferences::store(QLatin1String name, const QVariant& value)
{
    QString failure = QStringLiteral("The preferences could not be saved in %1.").arg(m_file);
    try {
        makeRoomForFile();
    } catch (const Error& error) {
        if (whyNotIni(m_file))
            throw; // the old file is still there and must not be written over
        failure = error.message();
    }
    if (!m_settings)
        m_settings = openPreferences(m_file);
    m_problem.reset();
    // A QSettings never forgets a failure, so every write asks one of its own; both share what they hold.
    const std::unique_ptr<QSettings> writer = openPreferences(m_file);
    writer->setValue(preferenceKey(name), value);
    writer->sync();
    if (writer->status() != QSettings::NoError)
        throw Error(failure);
}

void Preferences::store(QLatin1String name, const QString& text)
{
    store(name, QVariant(wellFormed(text)));
}

void Preferences::setConnection(const ConnectionSettings& settings)
{
    store(preferences::connection.name, QVariant(prettyJson(settings)));
}

QString Preferences::defaultModel() const
{
    return read(preferences::defaultModel);
}
void Preferences::setDefaultModel(const QString& model)
{
    store(preferences::defaultModel.name, model);
}

double Preferences::temperature() const
{
    return read(preferences::temperature);
}
void Preferences::setTemperature(double temperature)
{
    store(preferences::temperature.name, QVariant(temperature));
}

qint64 Preferences::contextLength() const
{
    return read(preferences::contextLength);
}
void Preferences::setContextLength(qint64 tokens)
{
    store(preferences::contextLength.name, QVariant(tokens));
}

QString Preferences::keepAlive() const
{
    return read(preferences::keepAlive);
}
void Preferences::setKeepAlive(const QString& keepAlive)
{
    store(preferences::keepAlive.name, keepAlive);
}

bool Preferences::passthrough() const
{
    return read(preferences::passthrough);
}
void Preferences::setPassthrough(bool allowed)
{
    store(preferences::passthrough.name, QVariant(allowed));
}

bool Preferences::contextButton() const
{
    return read(preferences::contextButton);
}
void Preferences::setContextButton(bool shown)
{
    store(preferences::contextButton.name, QVariant(shown));
}

std::optional<WorkContext> Preferences::workContext() const
{
    return fromRawValue<WorkContext>(text(preferences::workContext.name));
}
void Preferences::setWorkContext(WorkContext context)
{
    store(preferences::workContext.name, QString(rawValue(context)));
}

std::set<QString> Preferences::disabledProviderModels() const
{
    std::set<QString> entries;
    const QStringList list = stored(preferences::disabledProviderModels.name).toStringList();
    for (const QString& entry : list)
        entries.insert(wellFormed(entry));
    return entries;
}
void Preferences::setDisabledProviderModels(const std::set<QString>& entries)
{
    QStringList list;
    for (const QString& entry : entries)
        list.append(wellFormed(entry));
    store(preferences::disabledProviderModels.name, QVariant(list));
}

RemoteProvider Preferences::remoteProvider() const
{
    return remoteProviderFromRawValue(text(preferences::remoteProvider.name))
        .value_or(allRemoteProviders().front());
}
void Preferences::setRemoteProvider(RemoteProvider provider)
{
    store(preferences::remoteProvider.name, rawValue(provider));
}

QString Preferences::remoteModel(RemoteProvider provider) const
{
    const QStringList& models = suggestedModels(provider);
    if (provider == remoteProvider()) {
        const QString model = text(preferences::remoteModel.name);
        if (models.contains(model))
            return model;
    }
    return models.front();
}
void Preferences::setRemoteModel(const QString& model)
{
    store(preferences::remoteModel.name, model);
}

bool Preferences::onboardingComplete() const
{
    return read(preferences::onboardingComplete);
}
void Preferences::setOnboardingComplete(bool complete)
{
    store(preferences::onboardingComplete.name, QVariant(complete));
}

} // namespace varnel
