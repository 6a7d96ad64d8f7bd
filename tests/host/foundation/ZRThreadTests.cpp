#include <zrbase/host/foundation/ZRThread.h>

#include <gtest/gtest.h>

#include <thread>

TEST(ZRThread, knowsTheMainThread)
{
    EXPECT_TRUE(ZRExtension::isInMainThread());
    bool inOtherThread = true;
    std::thread([&] { inOtherThread = ZRExtension::isInMainThread(); }).join();
    EXPECT_FALSE(inOtherThread);
}
