#pragma once

#include "engine/AppModel.h"
#include "ui/EngineObjects.h"
#include "ui/PromptEdit.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

class QMimeData;

namespace varnel {

/// What comes from outside by dropping, pasting and choosing: files, pictures, links and long texts become
/// items of the library, and usually attachments.
class Intake : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QUrl homeFolder READ homeFolder CONSTANT)

public:
    /// What becomes of a new item.
    enum class Use {
        Attach, ///< it goes with the next message of the selected conversation
        Keep,   ///< it is kept in the library
    };
    /// A pasted text that is longer, in characters, becomes an attachment.
    static constexpr qsizetype longestPaste = 10000;
    /// The folder of the library where pasted texts are.
    static QString pastedFolder() { return tr("Pasted"); }

    /// The model and the edit outlive the object.
    Intake(AppModel& app, const PromptEdit& edit, QObject* parent = nullptr);
    static Intake* create(QQmlEngine* engine, QJSEngine*) { return provided<Intake>(engine); }

    /// Where people look for their files first.
    static QUrl homeFolder();

    /// Whether something can be attached now: not to an earlier prompt that is being edited. If not,
    /// refused() says so.
    Q_INVOKABLE bool mayAttach();
    /// Has a page of the web put into the message, unless an earlier prompt is being edited.
    /// @param session the selected one if it is null.
    Q_INVOKABLE void readPage(const QString& address, const QUuid& session = {});

    /// Whether takeDropped() would take something of it.
    static bool canTake(const QMimeData& data);
    /// Takes what was dropped; whether it did. A short text goes into the draft when it is to be attached.
    bool takeDropped(const QMimeData& data, const QString& folder, Use use);
    /// Takes what is in the clipboard, unless it is a text that belongs into the message; whether it did.
    Q_INVOKABLE bool paste();
    /// The same for any text: a short one is to be inserted.
    Q_INVOKABLE void pasteAnything();
    /// What is selected elsewhere, where the system offers that.
    Q_INVOKABLE void pasteSelection();
    /// The same for the library, which takes no texts.
    Q_INVOKABLE bool pasteIntoLibrary(const QString& folder);
    /// Takes files that were chosen.
    /// @param session to whose next message they are attached; the selected one if it is null.
    Q_INVOKABLE void takeFiles(const QList<QUrl>& files, const QString& folder, bool andAttach,
                               const QUuid& session = {});

Q_SIGNALS:
    /// A short text is to be inserted where the cursor of the message is.
    void textDropped(const QString& text);
    /// Why something was not taken.
    void refused(const QString& reason);

private:
    bool takeObjects(const QMimeData& data, const QString& folder, Use use);
    bool refuseObjects(const QMimeData& data);
    void insertText(const QString& text);
    void takeText(const QString& text);
    bool isForAnother(const QUuid& session) const;

    AppModel& m_app;
    const PromptEdit& m_edit;
};

} // namespace varnel
