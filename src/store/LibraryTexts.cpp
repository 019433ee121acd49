#include "store/LibraryTexts.h"

#include "base/Error.h"
#include "base/Text.h"
#include "store/FileAccess.h"
#include "store/LibraryPath.h"

#include <QStringList>

namespace varnel {

namespace {

QStringList noteAndLink(const LibraryItem& item)
{
    QStringList lines;
    if (const QString note = item.note.trimmed(); !note.isEmpty())
        lines.append(QStringLiteral("Note: ") + note);
    if (item.urlString)
        lines.append(QStringLiteral("Link: ") + item.urlString->trimmed());
    return lines;
}

QString contentsOf(const QString& file)
{
    FileBeginning beginning = readBeginning(file, largestAttachedText);
    const bool isCut = beginning.size > beginning.bytes.size();
    if (isCut)
        beginning.bytes.truncate(withoutCutCharacter(beginning.bytes).size());
    if (beginning.bytes.startsWith("\xEF\xBB\xBF"))
        beginning.bytes.remove(0, 3);
    if (!isUtf8(QByteArrayView(beginning.bytes)) || beginning.bytes.contains('\0'))
        return QStringLiteral("File attached at %1. It is not text.").arg(file);
    QString text = QString::fromUtf8(beginning.bytes);
    if (!isCut)
        return text;
    return QStringLiteral("%1\n[The file goes on: only the first %2 of its %3 KiB are given here.]")
        .arg(text, QString::number(largestAttachedText / 1024),
             QString::number((beginning.size + 1023) / 1024));
}

QString storedText(const QString& root, const LibraryItem& item)
{
    const QString file = libraryFile(root, *item.relativePath);
    if (item.kind == LibraryKind::Image)
        return QStringLiteral("Image attached at %1.").arg(file);
    if (item.kind == LibraryKind::Pdf)
        return QStringLiteral("PDF attached at %1. Text was not extracted.").arg(file);
    return contentsOf(file);
}

QLatin1String storedLabel(LibraryKind kind)
{
    switch (kind) {
    case LibraryKind::Pdf:
        return QLatin1String("PDF file: ");
    case LibraryKind::Image:
        return QLatin1String("Image file: ");
    case LibraryKind::File:
    case LibraryKind::Link:
        break;
    }
    return QLatin1String("File: ");
}

} // namespace

QString attachmentText(const QString& root, const LibraryItem& item)
{
    QStringList lines{QStringLiteral("[%1] %2").arg(rawValue(item.kind), item.title.simplified())};
    lines += noteAndLink(item);
    if (item.relativePath) {
        try {
            lines.append(storedText(root, item));
        } catch (const Error& error) {
            lines.append(QStringLiteral("The file could not be attached. ") + error.message());
        }
    }
    return lines.join(QLatin1Char('\n'));
}

QString markdownText(const LibraryItem& item)
{
    // Markdown would join lines that follow each other into one.
    QStringList paragraphs{QStringLiteral("# ") + item.title.simplified()};
    paragraphs += noteAndLink(item);
    if (item.relativePath)
        paragraphs.append(storedLabel(item.kind) +
                          item.relativePath->mid(item.relativePath->lastIndexOf(QLatin1Char('/')) + 1));
    return paragraphs.join(QStringLiteral("\n\n")) + QLatin1Char('\n');
}

} // namespace varnel
