#pragma once

#include <QString>
#include <QStringList>

namespace varnel {

/// The web addresses that a model can have from the user or from a page, rather than have made up itself: a
/// made-up one may carry away what the conversation holds.
class KnownAddresses
{
public:
    /// Every address in the text counts as known.
    void learn(const QString& text) { m_texts.append(text); }

    /// Whether an address is in a text, as a whole and in this writing; with or without its scheme, its
    /// fragment and a slash at its end.
    bool contains(const QString& url) const;

private:
    QStringList m_texts;
};

} // namespace varnel
