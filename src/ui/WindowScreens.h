#pragma once

#include "base/Clock.h"
#include "engine/AppModel.h"
#include "ui/Appearance.h"
#include "ui/AttachmentListModel.h"
#include "ui/ComposerState.h"
#include "ui/ConversationListModel.h"
#include "ui/ConversationSettings.h"
#include "ui/DesktopNotifier.h"
#include "ui/EngineTypes.h"
#include "ui/ExportFlow.h"
#include "ui/Intake.h"
#include "ui/LibraryListModel.h"
#include "ui/ModelListModel.h"
#include "ui/ProjectPreview.h"
#include "ui/PromptEdit.h"
#include "ui/ReplyNotices.h"
#include "ui/SettingsObjects.h"
#include "ui/TranscriptFeed.h"
#include "ui/WindowLayout.h"

#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTimer>

namespace varnel {

/// The main window over a model: everything that the screens look at, and the screens.
class WindowScreens
{
public:
    /// @param stateFile where the window's state is kept; the file need not exist.
    /// The model and the clock outlive the screens.
    WindowScreens(AppModel& app, const Clock& clock, QString stateFile);
    WindowScreens(const WindowScreens&) = delete;
    WindowScreens& operator=(const WindowScreens&) = delete;
    WindowScreens(WindowScreens&&) = delete;
    WindowScreens& operator=(WindowScreens&&) = delete;
    /// Writes the window's state.
    ~WindowScreens();

    /// Loads the window, not shown yet; null if its parts are not installed, which Qt reports.
    QQuickWindow* load();
    void show(QQuickWindow& window)
    {
        m_appearance.watchWheel(window);
        m_layout.show(window);
    }
    QQmlEngine& engine() { return m_engine; }
    /// Says when a notification was pressed and the window is wanted.
    const ReplyNotices& notices() const { return m_notices; }

private:
    void save() const;

    QString m_stateFile;
    WindowState m_state;
    DesktopHints m_hints;
    Appearance m_appearance;
    WindowLayout m_layout;
    ConversationListModel m_conversations;
    ModelListModel m_models;
    AttachmentListModel m_attachments;
    PromptEdit m_promptEdit;
    Intake m_intake;
    LibraryListModel m_library;
    ProjectPreview m_projectPreview;
    ComposerState m_composer;
    DesktopNotifier m_notifier;
    ReplyNotices m_notices;
    ExportFlow m_exports;
    ConversationSettings m_conversationSettings;
    TranscriptFeed m_feed;
    LinkForScreens m_link;
    SettingsObjects m_settings;
    QTimer m_saveSoon;
    // Last: the screens are gone before what they look at.
    QQmlApplicationEngine m_engine;
};

} // namespace varnel
