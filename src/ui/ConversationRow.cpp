#include "ui/ConversationRow.h"

#include <QCoreApplication>
#include <QLocale>
#include <QTimeZone>

namespace varnel {

namespace {

QString words(const char* text)
{
    return QCoreApplication::translate("ConversationList", text);
}

QString groupOf(const QDate& day, const QDate& today)
{
    const qint64 age = day.daysTo(today);
    if (age <= 0)
        return words("Today");
    if (age == 1)
        return words("Yesterday");
    if (age < 7)
        return words("Last 7 days");
    const QString month = QLocale().standaloneMonthName(day.month());
    return day.year() == today.year() ? month : QStringLiteral("%1 %2").arg(month).arg(day.year());
}

QString timeOf(const QDateTime& moment, const QDate& today)
{
    const QLocale locale;
    const qint64 age = moment.date().daysTo(today);
    if (age <= 1 && locale.language() == QLocale::C)
        return moment.time().toString(QStringLiteral("HH:mm")); // its short form has seconds
    if (age <= 1)
        return locale.toString(moment.time(), QLocale::ShortFormat);
    if (age < 7)
        return locale.standaloneDayName(moment.date().dayOfWeek(), QLocale::ShortFormat);
    return locale.toString(moment.date(), QLocale::ShortFormat);
}

} // namespace

QString previewOf(const QString& text)
{
    // Only what may be visible is looked at: the reply behind it can be megabytes, and grows while it runs.
    constexpr qsizetype longest = 160;
    QString line = text.left(longest).simplified();
    qsizetype start = 0;
    while (start < line.size() && QStringLiteral("#>*-`+ ").contains(line.at(start)))
        ++start;
    line.remove(0, start);
    line.remove(QStringLiteral("**"));
    return line;
}

ConversationRow rowOf(const ChatSession& session, const QDateTime& now)
{
    const QDateTime changed =
        QDateTime::fromMSecsSinceEpoch(session.updatedAt.time_since_epoch().count(), now.timeZone());
    ConversationRow row;
    row.id = session.id;
    row.title = session.title;
    for (auto message = session.messages.rbegin();
         message != session.messages.rend() && row.preview.isEmpty(); ++message)
        row.preview = previewOf(message->content);
    row.time = timeOf(changed, now.date());
    row.group = session.pinned ? words("Pinned") : groupOf(changed.date(), now.date());
    row.pinned = session.pinned;
    return row;
}

} // namespace varnel
