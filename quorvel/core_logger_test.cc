#include "quorvel/core_logger.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace quorvel {
namespace {

struct ScrubCase {
  std::string in;
  std::string out;
};

void PrintTo(const ScrubCase& c, std::ostream* os) {
  *os << c.in;
}

class CoreLoggerScrubTest : public ::testing::TestWithParam<ScrubCase> {};

TEST_P(CoreLoggerScrubTest, RemovesCredentialsAndKeepsTheRest) {
  EXPECT_EQ(CoreLogger::scrub(GetParam().in), GetParam().out);
}

INSTANTIATE_TEST_SUITE_P(
    Lines, CoreLoggerScrubTest,
    ::testing::Values(
        ScrubCase{"Authorization: Bearer tok-1a2b.c_d", "Authorization: Bearer <redacted>"},
        ScrubCase{"authorization: bearer   abc123 next", "authorization: Bearer <redacted> next"},
        ScrubCase{"jwt=eyJhbGciOiJIUzI1NiJ9.eyJzdWIiOiIxIn0.c2ln-_x end", "jwt=<redacted> end"},
        ScrubCase{"unsigned eyJhbGciOiJub25lIn0.eyJzdWIiOiIyIn0.", "unsigned <redacted>"},
        ScrubCase{"{\"access_token\": \"s3cr\\\"et\", \"n\":1}",
                  "{\"access_token\":\"<redacted>\", \"n\":1}"},
        ScrubCase{"GET https://www.example.com/a.b.c 200", "GET https://www.example.com/a.b.c 200"},
        ScrubCase{"eyJ alone and Bearer", "eyJ alone and Bearer"}));

TEST(CoreLoggerTest, HonoursTheThresholdAndScrubsBeforeTheSink) {
  std::vector<std::pair<LogLevel, std::string>> lines;
  CoreLogger::setSink([&](LogLevel level, std::string_view message) {
    lines.emplace_back(level, std::string(message));
  });
  CoreLogger::setLevel(LogLevel::warn);
  CoreLogger::info("dropped");
  CoreLogger::debug("dropped");
  CoreLogger::warn("kept Bearer abc");
  CoreLogger::error("kept too");
  CoreLogger::setLevel(LogLevel::verbose);
  CoreLogger::verbose("chatty");
  CoreLogger::resetForTesting();

  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], std::make_pair(LogLevel::warn, std::string("kept Bearer <redacted>")));
  EXPECT_EQ(lines[1].first, LogLevel::error);
  EXPECT_EQ(lines[2], std::make_pair(LogLevel::verbose, std::string("chatty")));
  EXPECT_FALSE(CoreLogger::enabled(LogLevel::debug));
  EXPECT_TRUE(CoreLogger::enabled(LogLevel::info));
}

}  // namespace
}  // namespace quorvel
