#pragma once

#include "engine/AppModel.h"
#include "tunnel/LinkState.h"
#include "ui/EngineObjects.h"

#include <QObject>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

#include <chrono>

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

/// The state of the link as the screens ask for it: the singleton Link. A look at the server that is over at
/// once does not show: until it takes some time, the state is what it was before.
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
        , m_shown(app.linkState())
    {
        m_soon.setSingleShot(true);
        m_soon.setInterval(std::chrono::milliseconds(150));
        connect(&m_soon, &QTimer::timeout, this, &LinkForScreens::show);
        connect(&app, &AppModel::linkStateChanged, this, [this] {
            if (m_app.linkState() == LinkState::Connecting)
                m_soon.start();
            else
                show();
        });
    }
    static LinkForScreens* create(QQmlEngine* engine, QJSEngine*) { return provided<LinkForScreens>(engine); }

    bool connected() const { return m_shown == LinkState::Connected; }
    bool connecting() const { return m_shown == LinkState::Connecting; }
    bool offline() const { return m_shown == LinkState::Offline; }

Q_SIGNALS:
    void changed();

private:
    void show()
    {
        m_soon.stop();
        m_shown = m_app.linkState();
        Q_EMIT changed();
    }

    const AppModel& m_app;
    LinkState m_shown;
    QTimer m_soon;
};

} // namespace varnel
