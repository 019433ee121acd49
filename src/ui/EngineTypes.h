#pragma once

#include "engine/AppModel.h"
#include "tunnel/LinkState.h"
#include "ui/EngineObjects.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace varnel {

/// The model as the screens know it: the singleton AppModel.
struct AppModelForScreens
{
    Q_GADGET
    QML_FOREIGN(varnel::AppModel)
    QML_NAMED_ELEMENT(AppModel)
    QML_SINGLETON

public:
    static AppModel* create(QQmlEngine* engine, QJSEngine*) { return provided<AppModel>(engine); }
};

/// What the model inherits, for the tools that look at screens.
struct AppStateForScreens
{
    Q_GADGET
    QML_FOREIGN(varnel::AppState)
    QML_ANONYMOUS
};

/// The state of the link as the screens ask for it: the singleton Link.
class LinkForScreens : public QObject
{
    Q_OBJECT
    QML_NAMED_ELEMENT(Link)
    QML_SINGLETON
    Q_PROPERTY(bool connected READ connected NOTIFY changed)
    Q_PROPERTY(bool connecting READ connecting NOTIFY changed)
    Q_PROPERTY(bool offline READ offline NOTIFY changed)

public:
    /// The model outlives the object.
    explicit LinkForScreens(const AppModel& app)
        : m_app(app)
    {
        connect(&app, &AppModel::linkStateChanged, this, &LinkForScreens::changed);
    }
    static LinkForScreens* create(QQmlEngine* engine, QJSEngine*) { return provided<LinkForScreens>(engine); }

    bool connected() const { return m_app.linkState() == LinkState::Connected; }
    bool connecting() const { return m_app.linkState() == LinkState::Connecting; }
    bool offline() const { return m_app.linkState() == LinkState::Offline; }

Q_SIGNALS:
    void changed();

private:
    const AppModel& m_app;
};

} // namespace varnel
