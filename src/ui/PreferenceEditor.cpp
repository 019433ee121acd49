#include "ui/PreferenceEditor.h"

#include "store/Preferences.h"

#include <cmath>

namespace varnel {

PreferenceEditor::PreferenceEditor(AppModel& app, QObject* parent)
    : QObject(parent)
    , m_app(app)
{
    connect(&app, &AppModel::defaultModelChanged, this, &PreferenceEditor::changed);
    connect(&app, &AppModel::contextButtonEnabledChanged, this, &PreferenceEditor::changed);
    connect(&app, &AppModel::passthroughEnabledChanged, this, &PreferenceEditor::changed);
}

QString PreferenceEditor::temperature() const
{
    return QString::number(m_app.preferences().temperature());
}

QString PreferenceEditor::contextLength() const
{
    return QString::number(m_app.preferences().contextLength());
}

QString PreferenceEditor::keepAlive() const
{
    return m_app.preferences().keepAlive();
}

bool PreferenceEditor::firstRunDue() const
{
    return !m_app.preferences().onboardingComplete();
}

QString PreferenceEditor::version()
{
    return QStringLiteral(VARNEL_VERSION);
}

QString PreferenceEditor::qtVersion()
{
    return QString::fromLatin1(qVersion());
}

void PreferenceEditor::setDefaultModel(const QString& name)
{
    if (name.trimmed() != defaultModel())
        m_app.chooseDefaultModel(name);
}

void PreferenceEditor::setTemperature(const QString& text)
{
    bool isNumber = false;
    const double value = text.trimmed().replace(QLatin1Char(','), QLatin1Char('.')).toDouble(&isNumber);
    if (isNumber && std::isfinite(value))
        store([value](Preferences& preferences) { preferences.setTemperature(value); });
}

void PreferenceEditor::setContextLength(const QString& text)
{
    bool isNumber = false;
    const qint64 value = text.trimmed().toLongLong(&isNumber);
    if (isNumber)
        store([value](Preferences& preferences) { preferences.setContextLength(value); });
}

void PreferenceEditor::setKeepAlive(const QString& text)
{
    store([&text](Preferences& preferences) { preferences.setKeepAlive(text); });
}

void PreferenceEditor::setContextButton(bool shown)
{
    m_app.setContextButtonEnabled(shown);
}

void PreferenceEditor::setPassthrough(bool allowed)
{
    m_app.setPassthroughEnabled(allowed);
}

void PreferenceEditor::finishFirstRun()
{
    store([](Preferences& preferences) { preferences.setOnboardingComplete(true); });
}

void PreferenceEditor::store(const std::function<void(Preferences&)>& write)
{
    m_problem.clear();
    try {
        write(m_app.preferences());
    } catch (const Error& error) {
        m_problem = error.message();
    }
    Q_EMIT changed();
}

} // namespace varnel
