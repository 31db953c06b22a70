// Broken promises: a fatal report ends the process with status 0.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>

struct tFatalCall {
    std::string report; ///< a regular expression found in what the process prints
    std::function<void()> call;
};

/// Every one of the calls reports and ends its process.
inline void ExpectFatal(std::initializer_list<tFatalCall> calls)
{
    for (const tFatalCall& fatal : calls) {
        SCOPED_TRACE(fatal.report);
        EXPECT_EXIT(fatal.call(), testing::ExitedWithCode(0), testing::ContainsRegex(fatal.report));
    }
}
