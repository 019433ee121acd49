#include "practice_host/LibraryPage.h"

#include "practice_host/PracticeModels.h"

namespace varnel::practice {

namespace {

QString escaped(const QString& text)
{
    return text.toHtmlEscaped().replace(QLatin1Char('\''), QStringLiteral("&#39;"));
}

QString card(const LibraryModel& model)
{
    QString text =
        QStringLiteral("<li>\n<a href=\"/library/%1\" class=\"group w-full\">\n<h2>%1</h2>\n"
                       "<p class=\"max-w-lg break-words\">%2</p>\n<div class=\"flex flex-wrap\">\n")
            .arg(escaped(model.name), escaped(model.summary));
    for (const QString& size : model.sizes)
        text +=
            QStringLiteral("<span class=\"inline-flex items-center rounded-md px-2\">%1</span>\n").arg(size);
    return text + QStringLiteral("</div>\n</a>\n</li>\n");
}

} // namespace

QByteArray libraryPage(const QString& query)
{
    const QString wanted = baseName(query.trimmed());
    QString page =
        QStringLiteral("<!doctype html>\n<html>\n<head><title>Practice library</title></head>\n<body>\n"
                       "<h1>Practice library: models that are none</h1>\n<ul role=\"list\">\n");
    for (const LibraryModel& model : practiceLibrary()) {
        if (model.name.contains(wanted, Qt::CaseInsensitive) ||
            model.summary.contains(wanted, Qt::CaseInsensitive))
            page += card(model);
    }
    return (page + QStringLiteral("</ul>\n</body>\n</html>\n")).toUtf8();
}

} // namespace varnel::practice
