#include "tests/emulator_process.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

namespace velmaro::testing {
namespace {

TEST(EmulatorProcess, StartsOnAFreePortAnswersControlsAndStopsOnSigterm) {
  EmulatorProcess emulator(QVK_EMULATOR_PATH, {"--voting", "off"});
  ASSERT_TRUE(emulator.running()) << emulator.error();
  EXPECT_EQ(emulator.url().rfind("http://127.0.0.1:", 0), 0u) << emulator.url();

  EXPECT_EQ(emulator.get("health").status, 200);
  const auto settings = emulator.get("/_emulator/settings");
  EXPECT_EQ(settings.status, 200);
  EXPECT_NE(settings.body.find("\"voting\":false"), std::string::npos) << settings.body;

  const auto status = emulator.stop();
  ASSERT_TRUE(status.has_value());
  // A clean stop: the emulator handles SIGTERM and exits normally.
  EXPECT_TRUE(WIFEXITED(*status)) << *status;
  EXPECT_EQ(WEXITSTATUS(*status), 0);
  EXPECT_FALSE(emulator.running());
  EXPECT_EQ(emulator.get("health").status, 0);
}

TEST(EmulatorProcess, ReportsABinaryThatCannotStart) {
  EmulatorProcess missing("/nonexistent/qvk-emulator", {}, std::chrono::seconds(2));
  EXPECT_FALSE(missing.running());
  EXPECT_FALSE(missing.error().empty());
}

}  // namespace
}  // namespace velmaro::testing
