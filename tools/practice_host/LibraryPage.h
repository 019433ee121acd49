#pragma once

#include <QByteArray>
#include <QString>

namespace varnel::practice {

/// The library's search page as HTML: a card for each practice model whose name or summary contains the query
/// up to its colon, in any casing.
QByteArray libraryPage(const QString& query);

} // namespace varnel::practice
