#pragma once

#include <QByteArray>
#include <QString>

namespace varnel {

/// The bytes of a page as text: in the character set of its byte order mark, its Content-Type header or its
/// own meta element, the first that is known; without one in UTF-8 if it is that, else in Windows-1252, as
/// browsers do. A character that is cut in two at the end is left out.
QString decodePage(const QByteArray& body, const QByteArray& contentType);

} // namespace varnel
