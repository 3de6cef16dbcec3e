#include "import/run/windowpace.h"

#include <gtest/gtest.h>

#include <vector>

namespace kolmera::test {
namespace {

TEST(WindowPace, FollowsTheServer) {
    const struct {
        const char* fault;
        std::vector<double> took;
        std::size_t size;
    } cases[] = {{"the first window is large, though the server may be slow", {}, 50},
                 {"windows stay small though the server is quick", {10, 10, 10}, 400},
                 {"windows grow without end", {1, 1, 1, 1, 1, 1, 1}, 2000},
                 {"a second long at the size of a quick server", {1, 1, 1, 1, 1, 1, 1000, 1000, 1000}, 250},
                 {"a server that waits for others brings a window below a batch", {5000, 5000, 5000}, 50},
                 {"a window that is as long as wanted changes the next", {10, 10, 250}, 200},
                 {"no whole batches", {10, 10, 300}, 150}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        WindowPace pace;
        for (const double milliseconds : c.took) pace.took(milliseconds);
        EXPECT_EQ(pace.size(), c.size);
        pace.startAnew();
        EXPECT_EQ(pace.size(), 50U);
    }
}

}  // namespace
}  // namespace kolmera::test
