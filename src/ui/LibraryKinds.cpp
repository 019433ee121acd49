#include "ui/LibraryKinds.h"

#include <QCoreApplication>

namespace varnel {

QString drawingOf(LibraryKind kind)
{
    switch (kind) {
    case LibraryKind::Pdf:
        return QStringLiteral("pdf");
    case LibraryKind::Image:
        return QStringLiteral("image");
    case LibraryKind::Link:
        return QStringLiteral("link");
    case LibraryKind::File:
        break;
    }
    return QStringLiteral("file");
}

QString kindName(LibraryKind kind)
{
    switch (kind) {
    case LibraryKind::Pdf:
        return QCoreApplication::translate("varnel::LibraryKinds", "PDF");
    case LibraryKind::Image:
        return QCoreApplication::translate("varnel::LibraryKinds", "Image");
    case LibraryKind::Link:
        return QCoreApplication::translate("varnel::LibraryKinds", "Link");
    case LibraryKind::File:
        break;
    }
    return QCoreApplication::translate("varnel::LibraryKinds", "File");
}

} // namespace varnel
