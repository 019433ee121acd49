#include "engine/Stage.h"

class AppModelFilesTest : public QObject
{
    Q_OBJECT
};

QTEST_GUILESS_MAIN(AppModelFilesTest)
#include "AppModelFilesTest.moc"
