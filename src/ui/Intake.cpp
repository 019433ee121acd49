#include "ui/Intake.h"

#include "base/Text.h"

#include <QBuffer>
#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>

#include <algorithm>

namespace varnel {

namespace {

QByteArray encoded(const QImage& picture)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "PNG");
    return bytes;
}

bool isWebAddress(const QUrl& url)
{
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
}

/// An address without what would give an account away, as the title of a link.
QString titleOf(const QUrl& url)
{
    constexpr qsizetype longest = 200;
    return url.toDisplayString(QUrl::RemoveUserInfo | QUrl::RemoveScheme | QUrl::RemoveQuery)
        .mid(2)
        .left(longest);
}

} // namespace

Intake::Intake(AppModel& app, const PromptEdit& edit, QObject* parent)
    : QObject(parent)
    , m_app(app)
    , m_edit(edit)
{}

QUrl Intake::homeFolder()
{
    return QUrl::fromLocalFile(QDir::homePath());
}

bool Intake::mayAttach()
{
    if (m_edit.active())
        Q_EMIT refused(tr("Nothing can be attached while an earlier prompt is edited."));
    return !m_edit.active();
}

void Intake::readPage(const QString& address, const QUuid& session)
{
    if (isForAnother(session) || mayAttach())
        m_app.readPage(address, session);
}

bool Intake::canTake(const QMimeData& data)
{
    return data.hasUrls() || data.hasImage() || data.hasText();
}

bool Intake::takeDropped(const QMimeData& data, const QString& folder, Use use)
{
    const bool edits = use == Use::Attach && m_edit.active();
    if (edits ? refuseObjects(data) : takeObjects(data, folder, use))
        return true;
    if (use == Use::Keep || !data.hasText())
        return false;
    insertText(data.text());
    return true;
}

void Intake::insertText(const QString& text)
{
    if (text.size() > longestPaste && !m_edit.active())
        takeText(text);
    else if (!text.isEmpty())
        Q_EMIT textDropped(text);
}

void Intake::pasteAnything()
{
    if (!paste())
        insertText(QGuiApplication::clipboard()->text());
}

void Intake::pasteSelection()
{
    insertText(QGuiApplication::clipboard()->text(QClipboard::Selection));
}

bool Intake::paste()
{
    const QMimeData* const data = QGuiApplication::clipboard()->mimeData();
    if (!data)
        return false;
    if (m_edit.active())
        return refuseObjects(*data);
    // Office programs offer what was copied as a picture as well; people mean the text.
    if (!data->hasText() || data->hasUrls()) {
        if (takeObjects(*data, {}, Use::Attach))
            return true;
    }
    const QString text = data->text();
    if (text.size() <= longestPaste)
        return false;
    takeText(text);
    return true;
}

bool Intake::pasteIntoLibrary(const QString& folder)
{
    const QMimeData* const data = QGuiApplication::clipboard()->mimeData();
    if (!data)
        return false;
    if (takeObjects(*data, folder, Use::Keep))
        return true;
    const QUrl url(data->text().trimmed(), QUrl::StrictMode);
    if (!isWebAddress(url) || url.host().isEmpty())
        return false;
    m_app.addLink(titleOf(url), url.toString(), {}, folder);
    return true;
}

void Intake::takeFiles(const QList<QUrl>& files, const QString& folder, bool andAttach, const QUuid& session)
{
    if (!andAttach || isForAnother(session) || mayAttach())
        m_app.importFiles(files, folder, andAttach, session);
}

/// Which is not the one whose earlier prompt may be being edited.
bool Intake::isForAnother(const QUuid& session) const
{
    return !session.isNull() && session != m_app.selection();
}

/// What is no text has no place in an earlier prompt.
bool Intake::refuseObjects(const QMimeData& data)
{
    const QList<QUrl> urls = data.urls();
    const bool hasFiles = std::ranges::any_of(urls, &QUrl::isLocalFile);
    return (hasFiles || (data.hasImage() && !data.hasText())) && !mayAttach();
}

bool Intake::takeObjects(const QMimeData& data, const QString& folder, Use use)
{
    const bool attaches = use == Use::Attach;
    QList<QUrl> files;
    QList<QUrl> links;
    for (const QUrl& url : data.urls()) {
        if (url.isLocalFile())
            files.append(url);
        else if (isWebAddress(url))
            links.append(url);
    }
    if (!files.isEmpty()) {
        m_app.importFiles(files, folder, attaches);
        return true;
    }
    // A picture dragged out of a browser comes with its address; the picture is what one sees.
    if (data.hasImage()) {
        const auto picture = data.imageData().value<QImage>();
        if (!picture.isNull()) {
            m_app.importContents([picture] { return encoded(picture); },
                                 tr("Picture") + QStringLiteral(".png"), folder, attaches);
            return true;
        }
    }
    for (const QUrl& url : std::as_const(links)) {
        m_app.addLink(titleOf(url), url.toString(), {}, folder);
        if (attaches && !m_app.libraryItems().empty())
            m_app.attach(m_app.libraryItems().front().id);
    }
    return !links.isEmpty();
}

void Intake::takeText(const QString& text)
{
    constexpr qsizetype longestTitle = 40;
    QString title = wellFormed(text.left(4 * longestTitle).simplified().left(longestTitle));
    if (const qsizetype lastWord = title.lastIndexOf(u' '); title.size() == longestTitle && lastWord > 0)
        title.truncate(lastWord);
    std::replace(title.begin(), title.end(), u'/', u' ');
    // What looks like an extension in the text is none.
    std::replace(title.begin(), title.end(), u'.', u' ');
    m_app.importContents([text] { return wellFormed(text).toUtf8(); },
                         (title.trimmed().isEmpty() ? tr("Pasted text") : title.trimmed()) +
                             QStringLiteral(".txt"),
                         pastedFolder(), true);
}

} // namespace varnel
