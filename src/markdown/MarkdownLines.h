#pragma once

#include <QStringView>

namespace varnel {

/// Hands every line of the text that is known to have ended to `take`, without its end, and removes it from
/// the text. A line ends at LF, CR or CRLF; a CR at the very end may become a CRLF and is left alone.
template <typename Take>
void takeWholeLines(QStringView& text, Take take)
{
    qsizetype carriageReturn = text.indexOf(u'\r');
    while (true) {
        const qsizetype lineFeed = text.indexOf(u'\n');
        if (carriageReturn < 0 || (lineFeed >= 0 && lineFeed < carriageReturn)) {
            if (lineFeed < 0)
                return;
            take(text.first(lineFeed));
            text = text.sliced(lineFeed + 1);
            carriageReturn -= carriageReturn < 0 ? 0 : lineFeed + 1;
            continue;
        }
        if (carriageReturn + 1 == text.size())
            return;
        take(text.first(carriageReturn));
        text = text.sliced(carriageReturn + (text[carriageReturn + 1] == u'\n' ? 2 : 1));
        carriageReturn = text.indexOf(u'\r');
    }
}

/// The last line of a text, without a carriage return that ends it.
inline QStringView withoutLineEnd(QStringView line)
{
    return line.endsWith(u'\r') ? line.chopped(1) : line;
}

} // namespace varnel
