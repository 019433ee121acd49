#pragma once

#include <QObject>
#include <QStringList>
#include <QTest>

#include <cstdio>
#include <utility>

namespace varnel::test {

/// A test that fails for every warning of the toolkit: a screen that complains is not right, whatever it
/// shows.
class QuietTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qInstallMessageHandler(keep); }
    void cleanup() { QCOMPARE(std::exchange(warnings, {}).join(QLatin1Char('\n')), QString()); }
    void cleanupTestCase() { qInstallMessageHandler(nullptr); }

private:
    static void keep(QtMsgType type, const QMessageLogContext&, const QString& text)
    {
        if (type == QtFatalMsg)
            std::fprintf(stderr, "%s\n%s\n", qPrintable(text), qPrintable(warnings.join(QLatin1Char('\n'))));
        // What ends an animation finds its driver gone when a whole window went meanwhile, as only tests do
        // it.
        else if (type != QtDebugMsg && type != QtInfoMsg &&
                 !text.startsWith(QLatin1String("QUnifiedTimer::")))
            warnings.append(text);
    }

    static inline QStringList warnings;
};

} // namespace varnel::test
