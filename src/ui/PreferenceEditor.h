#pragma once

#include "engine/AppModel.h"
#include "ui/EngineObjects.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include <functional>

namespace varnel {

/// The preferences as the settings show and change them. What is typed is stored as it is; what is shown is
/// what the program makes of it.
class PreferenceEditor : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QString defaultModel READ defaultModel WRITE setDefaultModel NOTIFY changed)
    Q_PROPERTY(QString temperature READ temperature WRITE setTemperature NOTIFY changed)
    Q_PROPERTY(QString contextLength READ contextLength WRITE setContextLength NOTIFY changed)
    Q_PROPERTY(QString keepAlive READ keepAlive WRITE setKeepAlive NOTIFY changed)
    Q_PROPERTY(bool contextButton READ contextButton WRITE setContextButton NOTIFY changed)
    Q_PROPERTY(bool passthrough READ passthrough WRITE setPassthrough NOTIFY changed)
    Q_PROPERTY(bool firstRunDue READ firstRunDue NOTIFY changed)
    Q_PROPERTY(QString problem READ problem NOTIFY changed)
    Q_PROPERTY(QString version READ version CONSTANT)
    Q_PROPERTY(QString qtVersion READ qtVersion CONSTANT)

public:
    /// The model outlives the object.
    explicit PreferenceEditor(AppModel& app, QObject* parent = nullptr);
    static PreferenceEditor* create(QQmlEngine* engine, QJSEngine*)
    {
        return provided<PreferenceEditor>(engine);
    }

    QString defaultModel() const { return m_app.defaultModel(); }
    QString temperature() const;
    QString contextLength() const;
    QString keepAlive() const;
    bool contextButton() const { return m_app.contextButtonEnabled(); }
    bool passthrough() const { return m_app.passthroughEnabled(); }
    /// Whether the first-run sheet has not been finished.
    bool firstRunDue() const;
    /// Why the last change could not be saved; empty if it could.
    const QString& problem() const { return m_problem; }

    /// Of the program, and of the Qt that it runs on.
    static QString version();
    static QString qtVersion();

    /// An empty name changes nothing.
    void setDefaultModel(const QString& name);
    /// A text that is no number changes nothing; a decimal comma is one too.
    void setTemperature(const QString& text);
    void setContextLength(const QString& text);
    void setKeepAlive(const QString& text);
    void setContextButton(bool shown);
    void setPassthrough(bool allowed);
    Q_INVOKABLE void finishFirstRun();

Q_SIGNALS:
    void changed();

private:
    void store(const std::function<void(Preferences&)>& write);

    AppModel& m_app;
    QString m_problem;
};

} // namespace varnel
