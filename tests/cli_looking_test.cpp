// What the command tells without converting: of encodings, and of what files are in.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "cli/Listing.h"
#include "tests/helpers/Command.h"

namespace {

using quorvel_test::Command;
using quorvel_test::Finished;
using testing::HasSubstr;
using testing::StartsWith;

TEST_F(Command, ListsTheEncodingsByFamily) {
  expectConverted(run("-l"), qvconv::listByFamily());
  expectConverted(run("--list"), qvconv::listByFamily());
  EXPECT_THAT(run("-l").out, StartsWith("Unicode\n   1200  utf-16  "));
}

TEST_F(Command, ListsTheEncodingsForPrograms) {
  expectConverted(run("-l --json"), qvconv::listAsJson());
  EXPECT_THAT(run("-l --json").out, StartsWith(R"({"number":37,"name":"IBM037",)"));
}

TEST_F(Command, RefusesWhatListingsHaveNoUseFor) {
  expectFailed(run("-l 932"), 2, "", "FILE: no file is read (leave it out; --help tells more)");
}

TEST_F(Command, FailsWhenAListingCannotBeWritten) {
  expectFailed(run("-l > /dev/full"), 1, "", "standard output: No space left on device");
}

}  // namespace
