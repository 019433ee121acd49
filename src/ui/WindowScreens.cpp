#include "ui/WindowScreens.h"

#include <QGuiApplication>
#include <QtQml/QQmlExtensionPlugin>

#include <chrono>

Q_IMPORT_QML_PLUGIN(VarnelPlugin)

namespace varnel {

WindowScreens::WindowScreens(AppModel& app, const Clock& clock, QString stateFile)
    : m_stateFile(std::move(stateFile))
    , m_state(loadWindowState(m_stateFile))
    , m_hints(m_state.desktopWasDark)
    , m_appearance(m_hints, m_state)
    , m_layout(m_state)
    , m_conversations(app, clock)
    , m_models(app)
    , m_attachments(app)
    , m_promptEdit(app)
    , m_intake(app, m_promptEdit)
    , m_library(app)
    , m_projectPreview(app)
    , m_composer(app, m_promptEdit, m_state)
    , m_notices(app, clock, m_notifier,
                [] { return QGuiApplication::applicationState() == Qt::ApplicationActive; })
    , m_exports(app)
    , m_conversationSettings(app)
    , m_feed(app, clock)
    , m_link(app)
    , m_settings(app)
{
    // A drag changes the state with every pixel.
    m_saveSoon.setSingleShot(true);
    m_saveSoon.setInterval(std::chrono::seconds(1));
    QObject::connect(&m_saveSoon, &QTimer::timeout, &m_saveSoon, [this] { save(); });
    const auto saveSoon = [this] { m_saveSoon.start(); };
    QObject::connect(&m_layout, &WindowLayout::changed, &m_saveSoon, saveSoon);
    QObject::connect(&m_appearance, &Appearance::schemeChanged, &m_saveSoon, saveSoon);
    QObject::connect(&m_appearance, &Appearance::zoomChanged, &m_saveSoon, saveSoon);
    QObject::connect(&m_composer, &ComposerState::sendsWithControlChanged, &m_saveSoon, saveSoon);

    QObject::connect(&m_intake, &Intake::refused, &m_composer, &ComposerState::remark);
    m_feed.setConsent([this](std::function<void()> action) { m_composer.afterConsent(std::move(action)); });
    QObject::connect(&m_feed, &TranscriptFeed::editRequested, &m_promptEdit,
                     [this](const QString& id) { m_promptEdit.begin(QUuid::fromString(id)); });
    QObject::connect(&m_feed, &TranscriptFeed::writeRequested, &m_projectPreview,
                     [this](const QString& id, const QString& path) {
                         m_projectPreview.show(QUuid::fromString(id), path);
                     });

    m_engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    provide(m_engine, app);
    provide(m_engine, m_appearance);
    provide(m_engine, m_layout);
    provide(m_engine, m_conversations);
    provide(m_engine, m_models);
    provide(m_engine, m_attachments);
    provide(m_engine, m_intake);
    provide(m_engine, m_library);
    provide(m_engine, m_projectPreview);
    provide(m_engine, m_promptEdit);
    provide(m_engine, m_composer);
    provide(m_engine, m_exports);
    provide(m_engine, m_conversationSettings);
    provide(m_engine, m_feed);
    provide(m_engine, m_link);
    m_settings.provideTo(m_engine);
}

WindowScreens::~WindowScreens()
{
    save();
}

QQuickWindow* WindowScreens::load()
{
    m_engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Varnel/Main.qml")));
    return m_engine.rootObjects().isEmpty()
               ? nullptr
               : qobject_cast<QQuickWindow*>(m_engine.rootObjects().constFirst());
}

void WindowScreens::save() const
{
    WindowState state = m_state;
    m_appearance.store(state);
    m_layout.store(state);
    m_composer.store(state);
    if (state != loadWindowState(m_stateFile))
        saveWindowState(m_stateFile, state);
}

} // namespace varnel
