#include "Walk.h"

/// Walks a folder and stats every file of it.
int main(int argc, char** argv)
{
    if (argc != 2)
        bench::fail("usage", "floor_walk FOLDER");
    long bytes = 0;
    bench::measure(
        [&]
        {
            return bench::walk(argv[1],
                               [&bytes](const std::string&, const struct stat& info)
                               { bytes += info.st_size; });
        });
    return bytes < 0;
}
