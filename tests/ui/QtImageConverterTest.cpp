#include "ui/QtImageConverter.h"
#include "support/Await.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <sys/stat.h>

using namespace varnel;
using namespace varnel::test;

namespace {

QByteArray saved(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, format))
        qFatal("no image to test with");
    return bytes;
}

QImage picture(QSize size, const QColor& colour, QImage::Format format = QImage::Format_RGB32)
{
    QImage image(size, format);
    image.fill(colour);
    image.setText(QStringLiteral("Comment"), QStringLiteral("taken at home"));
    return image;
}

/// The header of a picture that is far larger than its file.
QByteArray claimedSize(quint32 width, quint32 height)
{
    QByteArray bytes = saved(picture({8, 8}, Qt::red), "PNG");
    qToBigEndian(width, bytes.data() + 16);
    qToBigEndian(height, bytes.data() + 20);
    // The checksum of the header counts, or no decoder would believe the size.
    quint32 sum = 0xFFFFFFFFU;
    for (const char each : bytes.mid(12, 17)) {
        sum ^= static_cast<quint8>(each);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum & 1U) != 0 ? (sum >> 1U) ^ 0xEDB88320U : sum >> 1U;
    }
    qToBigEndian(sum ^ 0xFFFFFFFFU, bytes.data() + 29);
    return bytes;
}

} // namespace

class QtImageConverterTest : public QObject
{
    Q_OBJECT

    Worker m_worker;
    QtImageConverter m_converter{m_worker};

    std::optional<PromptMedia> converted(const QByteArray& bytes)
    {
        return await(m_converter.convert({.mime = QStringLiteral("image/x"), .data = bytes}, {}),
                     std::chrono::seconds(60));
    }

private Q_SLOTS:
    void imagesBecomeWhatProvidersRead_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("mime");
        QTest::addColumn<QSize>("size");
        const QString png = QStringLiteral("image/png");
        const QString jpeg = QStringLiteral("image/jpeg");
        QColor glass(Qt::blue);
        glass.setAlpha(100);
        QTest::newRow("bmp") << saved(picture({40, 30}, Qt::red), "BMP") << png << QSize(40, 30);
        QTest::newRow("large bmp") << saved(picture({4096, 1024}, Qt::red), "BMP") << png << QSize(2048, 512);
        QTest::newRow("jpeg") << saved(picture({3000, 4000}, Qt::red), "JPEG") << jpeg << QSize(1536, 2048);
        QTest::newRow("thin") << saved(picture({1, 9000}, Qt::red), "PNG") << png << QSize(1, 2048);
        QTest::newRow("glass") << saved(picture({3000, 30}, glass, QImage::Format_ARGB32), "PNG") << png
                               << QSize(2048, 20);
        QImage noise({1500, 1500}, QImage::Format_RGB32);
        quint32 seed = 1;
        for (int y = 0; y < noise.height(); ++y) {
            for (int x = 0; x < noise.width(); ++x)
                noise.setPixel(x, y, seed = seed * 1664525U + 1013904223U);
        }
        QTest::newRow("photograph as png") << saved(noise, "PNG") << jpeg << noise.size();
    }
    void imagesBecomeWhatProvidersRead()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, mime);
        QFETCH(QSize, size);
        const auto media = converted(bytes);
        QVERIFY(media);
        QCOMPARE(media->mime, mime);
        const QImage image =
            QImage::fromData(media->data, mime == QLatin1String("image/png") ? "PNG" : "JPEG");
        QCOMPARE(image.size(), size);
        QVERIFY(!media->data.contains("taken at home"));
    }

    void whatIsNoImageIsRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("text") << QByteArray("<html><img src='http://127.0.0.1/'></html>");
        QTest::newRow("cut") << saved(picture({40, 30}, Qt::red), "JPEG").first(20);
        QTest::newRow("claims") << claimedSize(60'000, 60'000);
        QTest::newRow("claims all memory") << claimedSize(0x7FFFFFFF, 0x7FFFFFFF);
    }
    void whatIsNoImageIsRefused()
    {
        QFETCH(QByteArray, bytes);
        QVERIFY(!converted(bytes));
    }

    void aDrawingThatNamesFilesIsNotRead()
    {
        QTemporaryDir folder;
        const QString fifo = folder.filePath(QStringLiteral("fifo"));
        QCOMPARE(mkfifo(qPrintable(fifo), 0600), 0);
        // Reading it would wait for a writer for ever.
        QVERIFY(
            !converted(QStringLiteral("<?xml version=\"1.0\"?><svg xmlns=\"http://www.w3.org/2000/svg\" "
                                      "xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"9\" height=\"9\">"
                                      "<image width=\"9\" height=\"9\" xlink:href=\"%1\"/></svg>")
                           .arg(fifo)
                           .toUtf8()));
    }

    void aStopEndsIt()
    {
        std::stop_source stop;
        stop.request_stop();
        QVERIFY_THROWS_EXCEPTION(
            Cancelled,
            await(m_converter.convert({.mime = {}, .data = saved(picture({40, 30}, Qt::red), "BMP")},
                                      stop.get_token())));
    }
};

QTEST_GUILESS_MAIN(QtImageConverterTest)
#include "QtImageConverterTest.moc"
