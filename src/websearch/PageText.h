#pragma once

#include <QString>

namespace varnel {

/// What is left of an HTML page.
struct PageText
{
    /// One line, at most 300 characters; empty for a page without a title.
    QString title;
    /// One line, at most 12,000 characters; empty for a page without text.
    QString text;

    bool operator==(const PageText&) const = default;
};

/// Takes title and text out of a page: head, scripts, styles and tags are left out, runs of white space
/// become one blank. Character references stay as they are. The time is linear in the page's length, whatever
/// it holds.
PageText reducePage(const QString& html);

/// The first `limit` characters (code points), fewer where that would cut a character that is made of
/// several; the whole text if it is not longer.
QString firstCharacters(const QString& text, qsizetype limit);

/// Every run of white space as one blank, none at the ends.
QString withSingleBlanks(QStringView text);

} // namespace varnel
