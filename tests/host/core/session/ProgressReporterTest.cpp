#include "core/session/ProgressReporter.h"

#include <gtest/gtest.h>

#include <vector>

using qo::host::ProgressEvent;
using qo::host::ProgressReporter;

namespace
{
/// A reporter whose clock moves with every step.
struct Stepper
{
    ProgressReporter::Clock::time_point now{};
    std::vector<ProgressEvent> events;
    ProgressReporter reporter{[this](const ProgressEvent& event) { events.push_back(event); },
                              [this] { return now; }};

    void steps(int count, std::chrono::microseconds each)
    {
        for (int i = 0; i < count; ++i)
        {
            now += each;
            reporter.step(1);
            reporter.setCurrentItem(u"C:\\music\\1.mp3", IQoProgress::itemFilePath);
        }
    }
};
} // namespace

TEST(ProgressReporter, QuickStepsGiveAboutTenEventsASecondAndSlowOnesAreSeenOneByOne)
{
    Stepper run;
    run.reporter.setStage(IQoProgress::stageCheck);
    run.reporter.setRange(IQoProgress::rangeKnown, 100000);
    run.steps(50000, std::chrono::microseconds(100));
    EXPECT_GE(run.events.size(), 45U);
    EXPECT_LE(run.events.size(), 51U);
    const ProgressEvent& last = run.events.back();
    EXPECT_EQ(last.stage, IQoProgress::stageCheck);
    EXPECT_EQ(last.item, "/music/1.mp3");
    EXPECT_EQ(last.total, 100000);
    EXPECT_NEAR(last.ratePerSecond, 10000, 10);
    EXPECT_NEAR(last.remainingSeconds, 5, 1);

    Stepper slow;
    slow.reporter.setStage(IQoProgress::stageCheck);
    slow.steps(200, std::chrono::seconds(1));
    EXPECT_GE(slow.events.size(), 20U);
}

TEST(ProgressReporter, EveryStageBeginsWithAnEventAndCountsAnew)
{
    Stepper run;
    for (const int stage : {1, 2, 3, 3, 4, 5})
    {
        run.reporter.setStage(stage);
        run.steps(3, std::chrono::microseconds(1));
    }
    ASSERT_EQ(run.events.size(), 6U);
    for (const ProgressEvent& event : run.events)
        EXPECT_EQ(event.count, 0);
    EXPECT_EQ(run.events.back().remainingSeconds, -1);
}

TEST(ProgressReporter, CancelStopsAtTheNextPollButNotASave)
{
    Stepper early;
    early.reporter.setStage(IQoProgress::stageCheck);
    EXPECT_FALSE(early.reporter.isCanceled());
    early.reporter.cancel();
    EXPECT_TRUE(early.reporter.isCanceled());
    EXPECT_TRUE(early.reporter.wasStopped());
    early.reporter.setStage(IQoProgress::stageSave);
    EXPECT_TRUE(early.reporter.isCanceled());

    Stepper late;
    late.reporter.setStage(IQoProgress::stageSave);
    late.reporter.cancel();
    EXPECT_FALSE(late.reporter.isCanceled());
    EXPECT_TRUE(late.reporter.cameTooLate());
}
