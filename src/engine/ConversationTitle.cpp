#include "engine/ConversationTitle.h"

#include "base/Text.h"

#include <QTextBoundaryFinder>

namespace varnel {

namespace {

QString cutAtWord(const QString& text, int limit)
{
    QString line = wellFormed(text.left(4096)).simplified();
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, line);
    for (int count = 0; count < limit; ++count) {
        if (characters.toNextBoundary() < 0)
            return line;
    }
    const qsizetype end = characters.position();
    if (end >= line.size())
        return line;
    const qsizetype word = line.at(end) == QLatin1Char(' ') ? end : line.lastIndexOf(QLatin1Char(' '), end);
    return line.left(word > 0 ? word : end);
}

} // namespace

QString titleFromPrompt(const QString& prompt)
{
    return cutAtWord(prompt, 48);
}

QString importedTitle(const QString& title)
{
    const QString cut = cutAtWord(title, 200);
    return cut.isEmpty() ? QStringLiteral("New conversation") : cut;
}

} // namespace varnel
