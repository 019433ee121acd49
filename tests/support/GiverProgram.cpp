// Another program on the display: varnel-test-giver FILE. It puts a picture on the clipboard, and whoever
// drags its window drags the file.
#include <QClipboard>
#include <QDrag>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QRasterWindow>
#include <QUrl>

namespace {

class Giver : public QRasterWindow
{
public:
    explicit Giver(QString file)
        : m_file(std::move(file))
    {
        setFlags(Qt::BypassWindowManagerHint);
        setGeometry(0, 660, 100, 100);
    }

protected:
    void mouseMoveEvent(QMouseEvent*) override
    {
        if (std::exchange(m_drags, true))
            return;
        auto* const data = new QMimeData;
        data->setUrls({QUrl::fromLocalFile(m_file)});
        auto* const drag = new QDrag(this);
        drag->setMimeData(data);
        drag->exec(Qt::CopyAction);
    }

private:
    QString m_file;
    bool m_drags = false;
};

} // namespace

int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    QImage picture(64, 48, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QGuiApplication::clipboard()->setImage(picture);
    Giver giver(QGuiApplication::arguments().value(1));
    giver.show();
    return QGuiApplication::exec();
}
