#pragma once

#include <gtest/gtest.h>

#include "tests/helpers/RecordingLog.h"

namespace quorvel_test {

/// Lets a sink throw at each call that `operation` makes of it in turn, and
/// checks that every context is closed again and the exception arrives.
template <typename Operation>
void expectBalanceWhereverTheSinkThrows(bool verbose, Operation operation) {
  RecordingLog whole(verbose);
  operation(whole);
  const long calls = static_cast<long>(whole.lines.size());
  ASSERT_GT(calls, 0);
  for (long call = 0; call < calls; ++call) {
    RecordingLog log(verbose);
    log.throwAt(call);
    try {
      operation(log);
      ADD_FAILURE() << "the exception of call " << call << " was lost";
    } catch (const SinkFailure& failure) {
      EXPECT_EQ(failure.call, call);
    }
    EXPECT_EQ(log.openContexts, 0) << "after call " << call;
  }
}

}  // namespace quorvel_test
