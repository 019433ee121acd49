#include "ollama/ThinkBlock.h"

#include <algorithm>
#include <utility>

namespace varnel {

namespace {

constexpr QStringView opening = u"<think>";
constexpr QStringView closing = u"</think>";

/// Models begin with a line break or two; whoever sends more than this is not kept waiting for a tag.
constexpr qsizetype longestSpace = 64;

qsizetype leadingSpace(QStringView text)
{
    const auto isInk = [](QChar character) { return !character.isSpace(); };
    return std::find_if(text.begin(), text.end(), isInk) - text.begin();
}

/// How many characters at the end may be the beginning of the closing tag.
qsizetype undecidedEnd(QStringView text)
{
    qsizetype length = std::min(closing.size() - 1, text.size());
    while (!text.endsWith(closing.first(length)))
        --length;
    return length;
}

} // namespace

ThinkBlock::Parts ThinkBlock::take(const QString& content)
{
    m_kept += content;
    Parts parts;
    while (advance(parts)) {
    }
    return parts;
}

ThinkBlock::Parts ThinkBlock::finish()
{
    const QString rest = std::exchange(m_kept, QString());
    return m_place == Place::Inside ? Parts{.thinking = rest, .reply = {}}
                                    : Parts{.thinking = {}, .reply = rest};
}

void ThinkBlock::expectNone()
{
    m_place = Place::Behind;
}

/// Takes from what is kept; whether the place has changed, so that the rest has to be looked at again.
bool ThinkBlock::advance(Parts& parts)
{
    switch (m_place) {
    case Place::Before:
        return findOpening();
    case Place::Inside:
        return findClosing(parts);
    case Place::AfterOpening:
    case Place::AfterClosing:
        m_kept.remove(0, leadingSpace(m_kept));
        if (m_kept.isEmpty())
            return false;
        m_place = m_place == Place::AfterOpening ? Place::Inside : Place::Behind;
        return true;
    case Place::Behind:
        parts.reply += std::exchange(m_kept, QString());
        return false;
    }
    return false;
}

bool ThinkBlock::findOpening()
{
    const qsizetype space = leadingSpace(m_kept);
    const QStringView text = QStringView(m_kept).sliced(space);
    if (space <= longestSpace && text.startsWith(opening)) {
        m_kept.remove(0, space + opening.size());
        m_place = Place::AfterOpening;
        return true;
    }
    if (space <= longestSpace && opening.startsWith(text))
        return false; // it may still become one
    m_place = Place::Behind;
    return true;
}

bool ThinkBlock::findClosing(Parts& parts)
{
    const qsizetype end = m_kept.indexOf(closing);
    const qsizetype known = end >= 0 ? end : m_kept.size() - undecidedEnd(m_kept);
    parts.thinking += QStringView(m_kept).first(known);
    m_kept.remove(0, end >= 0 ? end + closing.size() : known);
    if (end >= 0)
        m_place = Place::AfterClosing;
    return end >= 0;
}

ThinkBlock::Parts splitThinkBlock(const QString& content)
{
    ThinkBlock block;
    ThinkBlock::Parts parts = block.take(content);
    const ThinkBlock::Parts rest = block.finish();
    return {.thinking = parts.thinking + rest.thinking, .reply = parts.reply + rest.reply};
}

} // namespace varnel
