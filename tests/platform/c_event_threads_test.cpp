#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "vekdll/platform/c_event.h"

namespace {

TEST(CEventTest, ManualResetReleasesWaitersUntilReset)
{
    CEvent event;
    EXPECT_FALSE(event.IsSet());
    int result = 0;
    std::thread worker([&] {
        result = 42;
        event.SetEvent();
    });
    event.Wait();
    EXPECT_EQ(result, 42);
    event.Wait(); // stays set
    worker.join();
    event.ResetEvent();
    EXPECT_FALSE(event.IsSet());
    CEvent preset(true);
    preset.Wait();
}

TEST(CEventTest, EachWorkerSignalsItsOwnEvent)
{
    constexpr int workers = 5;
    std::vector<int> results(workers, 0);
    CEvent done[workers];
    std::vector<std::thread> threads;
    for (int i = 0; i < workers; ++i) {
        threads.emplace_back([&, i] {
            results[i] = i * i;
            done[i].SetEvent();
        });
    }
    for (CEvent& event : done) event.Wait();
    for (int i = 0; i < workers; ++i) EXPECT_EQ(results[i], i * i);
    for (std::thread& t : threads) t.join();
}

} // namespace
