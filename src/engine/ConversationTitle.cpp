#include "engine/ConversationTitle.h"

#include <QTextBoundaryFinder>

namespace varnel {

QString titleFromPrompt(const QString& prompt)
{
    constexpr int limit = 48;
    QString line = prompt.left(4096).simplified();
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

} // namespace varnel
