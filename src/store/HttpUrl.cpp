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

} // namespace varnel
