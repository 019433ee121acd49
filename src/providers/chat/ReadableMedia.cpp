#include "providers/chat/ReadableMedia.h"

#include "providers/VarnelError.h"

namespace varnel {

namespace {

/// The type as the services spell it.
QString spelledType(const QString& mime)
{
    const QString lower = mime.trimmed().toLower();
    return lower == QLatin1String("image/jpg") ? QStringLiteral("image/jpeg") : lower;
}

VarnelError unreadable(RemoteProvider provider, const QString& mime)
{
    return VarnelError::api(
        QStringLiteral(
            "%1 cannot read an attachment of the type %2, and it could not be converted. Attach it "
            "as PNG or JPEG.")
            .arg(displayName(provider), mime.isEmpty() ? QStringLiteral("(unknown)") : mime));
}

Task<PromptMedia> readable(RemoteProvider provider, PromptMedia media, ImageConverter* converter,
                           std::stop_token stop)
{
    if (media.mime == QLatin1String("application/pdf"))
        co_return media;
    const QString type = spelledType(media.mime);
    if (readsImageType(provider, type))
        co_return PromptMedia{.mime = type, .data = std::move(media.data)};
    if (!converter)
        throw unreadable(provider, type);
    const std::optional<PromptMedia> converted =
        co_await converter->convert(std::move(media), std::move(stop));
    if (!converted || !readsImageType(provider, converted->mime))
        throw unreadable(provider, type);
    co_return *converted;
}

} // namespace

bool readsImageType(RemoteProvider provider, const QString& mime)
{
    if (mime == QLatin1String("image/png") || mime == QLatin1String("image/jpeg") ||
        mime == QLatin1String("image/webp"))
        return true;
    // The others take moving pictures, this one the photographs of telephones.
    if (provider == RemoteProvider::Gemini)
        return mime == QLatin1String("image/heic") || mime == QLatin1String("image/heif");
    return mime == QLatin1String("image/gif");
}

Task<std::vector<ProviderMessage>> readableMessages(RemoteProvider provider,
                                                    std::vector<ProviderMessage> messages,
                                                    ImageConverter* converter, std::stop_token stop)
{
    for (ProviderMessage& message : messages) {
        for (PromptMedia& media : message.media) {
            if (stop.stop_requested())
                throw Cancelled();
            media = co_await readable(provider, std::move(media), converter, stop);
        }
    }
    co_return messages;
}

} // namespace varnel
