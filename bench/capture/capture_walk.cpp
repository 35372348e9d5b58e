// capture_walk TREE FOLDER: walks TREE as drive d: and writes FOLDER/BENCH.lst, as the creation
// window's worker does; the process the benchmark times against find.
#include "treewalk.h"

#include <cstdio>

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: capture_walk TREE FOLDER\n");
        return 2;
    }
    return TreeWalk(QString::fromLocal8Bit(argv[1])).run(QString::fromLocal8Bit(argv[2])) > 0 ? 0 : 1;
}
