// Fills a data folder with conversations, for benchmarks of the whole program.
//
// varnel-bench-profile FOLDER MEBIBYTES COUNT

#include "LargeProfile.h"

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4) {
        std::fprintf(stderr, "usage: varnel-bench-profile FOLDER MEBIBYTES COUNT\n");
        return 2;
    }
    varnel::bench::fill(arguments[1], arguments[2].toDouble(), arguments[3].toInt());
}
