#pragma once

#include "ui/ModelFixture.h"
#include "ui/WindowScreens.h"

#include <QDragEnterEvent>
#include <QFile>
#include <QMimeData>
#include <QQuickItem>
#include <QTest>

namespace varnel::test {

/// The window with what its composer, library and preview show.
struct ComposerFixture : ModelFixture
{
    ComposerFixture()
    {
        if (!window)
            qFatal("the window did not load");
        screens.show(*window);
        if (!waitUntil([this] { return window->isActive(); }))
            qFatal("the window did not become active");
    }

    template <typename T>
    T& part(const char* name)
    {
        return *screens.engine().singletonInstance<T*>(qmlTypeId("Varnel", 1, 0, name));
    }
    ComposerState& composer() { return part<ComposerState>("ComposerState"); }
    PromptEdit& edit() { return part<PromptEdit>("PromptEdit"); }
    AttachmentListModel& chips() { return part<AttachmentListModel>("AttachmentListModel"); }
    ProjectPreview& preview() { return part<ProjectPreview>("ProjectPreview"); }
    TranscriptFeed& feed() { return part<TranscriptFeed>("TranscriptFeed"); }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(window, static_cast<Qt::Key>(key), modifiers);
    }
    void type(const QString& text) const
    {
        for (const QChar character : text)
            QTest::keyClick(window, character.toLatin1());
    }
    bool attached(std::size_t number)
    {
        return waitUntil([&] { return app.attachmentIDs().size() == number && !app.isImporting(); });
    }
    /// Drags something over the middle of the window and lets it fall; whether it was taken.
    bool drop(const QMimeData& data) const
    {
        const QPoint place(window->width() / 2, window->height() / 2);
        QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window, &enter);
        QDragMoveEvent move(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window, &move);
        QDropEvent drop(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window, &drop);
        return drop.isAccepted();
    }
    QUrl file(const QString& name, const QByteArray& contents) const
    {
        const QString path = profile.folder.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
            qFatal("a file could not be made");
        return QUrl::fromLocalFile(path);
    }

    WindowScreens screens{app, clock, profile.folder.filePath(QStringLiteral("window.ini"))};
    QQuickWindow* window = screens.load();
};

} // namespace varnel::test
