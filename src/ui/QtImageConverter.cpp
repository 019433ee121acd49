#include "ui/QtImageConverter.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImage>
#include <QImageReader>

#include <algorithm>
#include <array>

namespace varnel {

namespace {

/// What one image may take while it is decoded. A file of some bytes can claim any size.
constexpr int mebibytesOfImage = 512;
constexpr qint64 mostPixels = 120'000'000;
constexpr int jpegQuality = 88;
/// An opaque picture that takes more as PNG is a photograph.
constexpr qsizetype largestPng = qsizetype(2) << 20;

bool isReadFormat(const QByteArray& format)
{
    static constexpr std::array formats{"png",  "jpeg", "jpg",  "gif",  "bmp",  "webp",
                                        "tiff", "tif",  "heic", "heif", "avif", "ico"};
    return std::any_of(formats.begin(), formats.end(),
                       [&format](const char* each) { return format == each; });
}

bool isPhotograph(const QByteArray& format)
{
    return format == "jpeg" || format == "jpg" || format == "heic" || format == "heif" || format == "avif";
}

QSize fitting(QSize size)
{
    const QSize limit(QtImageConverter::longestSide, QtImageConverter::longestSide);
    return std::max(size.width(), size.height()) <= QtImageConverter::longestSide
               ? size
               : size.scaled(limit, Qt::KeepAspectRatio).expandedTo({1, 1});
}

/// The pixels alone: no place, no owner, no comment.
QImage withoutRemarks(const QImage& image)
{
    QImage bare(image.size(), image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    const QImage source = image.convertToFormat(bare.format());
    for (int y = 0; y < bare.height(); ++y)
        std::copy_n(source.constScanLine(y), source.bytesPerLine(), bare.scanLine(y));
    return bare;
}

bool showsThrough(const QImage& image)
{
    if (!image.hasAlphaChannel())
        return false;
    for (int y = 0; y < image.height(); ++y) {
        const auto* const line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        if (std::any_of(line, line + image.width(), [](QRgb pixel) { return qAlpha(pixel) != 255; }))
            return true;
    }
    return false;
}

QImage decoded(QBuffer& buffer, const QByteArray& format)
{
    QImageReader reader(&buffer, format);
    // Only the decoder that was asked for: others may open what an image names.
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.isValid()) {
        if (qint64(size.width()) * size.height() > mostPixels)
            return {};
        // Some decoders make the smaller picture right away.
        reader.setScaledSize(fitting(size));
    }
    QImage image = reader.read();
    if (image.isNull())
        return {};
    if (image.colorSpace().isValid())
        image.convertToColorSpace(QColorSpace::SRgb);
    if (const QSize fit = fitting(image.size()); fit != image.size())
        image = image.scaled(fit, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return withoutRemarks(image);
}

std::optional<PromptMedia> encoded(const QImage& image, const char* format)
{
    PromptMedia media;
    media.mime = QStringLiteral("image/") + QString::fromLatin1(format).toLower();
    QBuffer buffer(&media.data);
    if (!buffer.open(QIODevice::WriteOnly) ||
        !image.save(&buffer, format, qstrcmp(format, "JPEG") == 0 ? jpegQuality : -1))
        return std::nullopt;
    return media;
}

std::optional<PromptMedia> convertNow(PromptMedia media, const std::stop_token& stop)
{
    QBuffer buffer(&media.data);
    if (!buffer.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray format = QImageReader::imageFormat(&buffer);
    if (!isReadFormat(format) || !buffer.seek(0))
        return std::nullopt;
    const QImage image = decoded(buffer, format);
    if (image.isNull())
        return std::nullopt;
    if (stop.stop_requested())
        throw Cancelled();
    const bool isOpaque = !showsThrough(image);
    if (isOpaque && isPhotograph(format))
        return encoded(image, "JPEG");
    std::optional<PromptMedia> png = encoded(image, "PNG");
    return png && isOpaque && png->data.size() > largestPng ? encoded(image, "JPEG") : png;
}

} // namespace

QtImageConverter::QtImageConverter(Worker& worker)
    : m_worker(worker)
{
    QImageReader::setAllocationLimit(mebibytesOfImage);
}

Task<std::optional<PromptMedia>> QtImageConverter::convert(PromptMedia image, std::stop_token stop)
{
    return m_worker.run(
        [image = std::move(image)](const std::stop_token& stopped) { return convertNow(image, stopped); },
        std::move(stop));
}

} // namespace varnel
