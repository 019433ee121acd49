#include "providers/chat/ProviderAnswer.h"

#include <QSet>
#include <QStringList>

namespace varnel {

namespace {

/// A title that holds a line break would end the list and begin something else.
QString singleLine(QString text)
{
    for (QChar& character : text) {
        if (character == u'\n' || character == u'\r' || character == QChar::LineSeparator ||
            character == QChar::ParagraphSeparator)
            character = u' ';
    }
    return text;
}

} // namespace

QString textWithSources(const ProviderAnswer& answer)
{
    QSet<QString> taken;
    QStringList lines;
    for (const ProviderSource& source : answer.sources) {
        const QString url = singleLine(source.url.trimmed());
        if (url.isEmpty() || taken.contains(url) || answer.text.contains(url))
            continue;
        taken.insert(url);
        const QString title = singleLine(source.title.trimmed());
        lines.append(QStringLiteral("- [") + (title.isEmpty() ? url : title) + QStringLiteral("](") + url +
                     u')');
    }
    if (lines.isEmpty())
        return answer.text;
    const QString block = QStringLiteral("\nSources:\n") + lines.join(u'\n');
    return answer.text.isEmpty() ? block : answer.text + u'\n' + block;
}

} // namespace varnel
