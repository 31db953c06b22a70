// Runs a part of a test in a process of its own: for what a process does only once, or gives up for good.
#pragma once

#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

/// Added to the number of the signal that ended a child.
constexpr int kBySignal = 1000;

/// @return the status with which a child ended that ran the action, or kBySignal and a signal; -1 without a child
inline int RunChild(const std::function<int()>& action)
{
    fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        _exit(action());
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) {
        return -1;
    }
    return WIFSIGNALED(status) ? kBySignal + WTERMSIG(status) : WEXITSTATUS(status);
}

/// Runs `body` in a child; its failures are printed there and fail the test here, as does a death by a signal.
inline void RunInChild(const std::function<void()>& body)
{
    EXPECT_EQ(RunChild([&body] {
                  body();
                  fflush(nullptr);
                  return testing::Test::HasFailure() ? 1 : 0;
              }),
              0);
}
