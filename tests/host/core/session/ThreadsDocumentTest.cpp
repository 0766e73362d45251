#include "core/session/KernelThread.h"
#include "core/session/ProgressReporter.h"
#include "support/DocExample.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace
{
// example
int countUntilCancelled(qo::host::KernelThread& kernel, qo::host::ProgressReporter& progress)
{
    std::future<int> counted = kernel.post(
        [&progress]
        {
            int steps = 0;
            while (!progress.isCanceled())
                ++steps;
            return steps;
        });
    progress.cancel(); // from this thread, while the kernel's own one counts
    return counted.get();
}
// end of the example

/// What stands in this file between the two marks above.
std::string exampleOfThisFile()
{
    std::ifstream file(__FILE__);
    std::ostringstream all;
    all << file.rdbuf();
    const std::string text = all.str();
    const std::string begin = "// example\n";
    const std::size_t start = text.find(begin) + begin.size();
    return text.substr(start, text.find("// end of the example") - start);
}
} // namespace

TEST(ThreadsDocument, ItsExampleRunsAndStops)
{
    EXPECT_EQ(docExample("threads.md", "cpp"), exampleOfThisFile());
    qo::host::KernelThread kernel;
    qo::host::ProgressReporter progress([](const qo::host::ProgressEvent&) {});
    EXPECT_GE(countUntilCancelled(kernel, progress), 0);
    EXPECT_TRUE(progress.wasStopped());
}
