#include "store/HttpUrl.h"

namespace varnel {

std::optional<QUrl> parseHttpUrl(const QString& text)
{
    QUrl url(text, QUrl::StrictMode);
    const QString scheme = url.scheme();
    if (!url.isValid() || (scheme != QLatin1String("http") && scheme != QLatin1String("https")) ||
        url.host().isEmpty())
        return std::nullopt;
    return url;
}

QUrl endpointUrl(const QUrl& base, const QString& endpoint)
{
    QString path = base.path(QUrl::FullyEncoded);
    while (path.endsWith(QLatin1Char('/')))
        path.chop(1); // a doubled slash is another address
    QUrl url = base;
    url.setPath(path + QLatin1Char('/') + endpoint, QUrl::TolerantMode);
    return url;
}

} // namespace varnel
