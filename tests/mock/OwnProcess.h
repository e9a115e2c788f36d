/// Keeps what a process remembers (the chip, the driver's directory) out of other tests.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>

/// Runs `body` in a forked copy of this process; what fails there fails the test here.
template <class Body>
void inOwnProcess(Body body) {
  const auto run = [&] {
    body();
    std::exit(testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(EXIT_SUCCESS), "");
}
