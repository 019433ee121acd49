// Times the askpass helper, which must already be able to answer: varnel-bench-askpass PROGRAM

#include "Measure.h"

using namespace varnel::bench;

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    const auto runs = runInTurn({{argv[1], "password: "}}, 31);
    report("askpass, wall", median(runs[0], &Run::wall), "ms", "< 30");
    report("askpass, peak memory", median(runs[0], &Run::peak), "MiB", "");
    return 0;
}
