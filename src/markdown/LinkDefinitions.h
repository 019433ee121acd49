#pragma once

#include "markdown/MarkdownBlock.h"

#include <QHash>
#include <QString>
#include <QStringView>

#include <optional>

namespace varnel {

/// The link reference definitions of a text, "[label]: destination "title"". The first one of a label counts.
class LinkDefinitions
{
public:
    /// Longest label, in UTF-16 units; a longer one defines and refers to nothing.
    static constexpr qsizetype maximumLabel = 999;

    bool isEmpty() const { return m_links.isEmpty(); }
    qsizetype count() const { return m_links.size(); }
    std::optional<MarkdownLink> find(QStringView label) const;

    /// Learns the definitions that a paragraph begins with and returns the rest of the paragraph.
    QStringView take(QStringView paragraph);

private:
    QHash<QString, MarkdownLink> m_links;
};

} // namespace varnel
