#pragma once

#include "engine/AppModel.h"
#include "ui/EngineObjects.h"

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

    /// The model outlives the object.
    explicit Intake(AppModel& app, QObject* parent = nullptr);
    static Intake* create(QQmlEngine* engine, QJSEngine*) { return provided<Intake>(engine); }

    /// Where people look for their files first.
    static QUrl homeFolder();

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
    Q_INVOKABLE void takeFiles(const QList<QUrl>& files, const QString& folder, bool andAttach);

Q_SIGNALS:
    /// A short text is to be inserted where the cursor of the message is.
    void textDropped(const QString& text);

private:
    bool takeObjects(const QMimeData& data, const QString& folder, Use use);
    void insertText(const QString& text);
    void takeText(const QString& text);

    AppModel& m_app;
};

} // namespace varnel
