#include "quorvel/platform/date_formatter.h"

#include <cstdlib>
#include <ctime>
#include <memory>

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>

#include "quorvel/platform/duration_formatter.h"

namespace quorvel::platform {
namespace {

using std::chrono::seconds;
using std::chrono::sys_days;
using namespace std::chrono_literals;
constexpr const char* kWireFormat = "yyyy-MM-dd'T'HH:mm:ss'Z'";

// Puts the process in an unusual time zone and locale (Persian calendar,
// Eastern Arabic digits) for the length of a test and restores both after.
class ExoticLocaleTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const char* tz = std::getenv("TZ")) savedTz_ = tz;
    savedLocale_ = icu::Locale::getDefault();
    savedZone_.reset(icu::TimeZone::createDefault());
    setenv("TZ", "Pacific/Chatham", 1);
    tzset();
    icu::TimeZone::adoptDefault(icu::TimeZone::createTimeZone("Pacific/Chatham"));
    setDefaultLocale("fa_IR@calendar=persian;numbers=arabext");
  }
  void TearDown() override {
    if (savedTz_) {
      setenv("TZ", savedTz_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
    icu::TimeZone::setDefault(*savedZone_);
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(savedLocale_, status);
  }
  static void setDefaultLocale(const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale(name), status);
    ASSERT_TRUE(U_SUCCESS(status));
  }

 private:
  std::optional<std::string> savedTz_;
  icu::Locale savedLocale_;
  std::unique_ptr<icu::TimeZone> savedZone_;
};

TEST_F(ExoticLocaleTest, WireFormatIsIndependentOfZoneAndLocale) {
  const auto formatter = DateFormatter::fixed(kWireFormat);
  ASSERT_TRUE(formatter.valid());
  const auto instant = sys_days{std::chrono::year{2017} / 3 / 1} + 10h + 20min + 30s;
  EXPECT_EQ(formatter.parse("2017-03-01T10:20:30Z"), instant);
  EXPECT_EQ(formatter.format(instant), "2017-03-01T10:20:30Z");
  EXPECT_EQ(formatter.format(std::chrono::system_clock::time_point{}), "1970-01-01T00:00:00Z");
  EXPECT_EQ(formatter.pattern(), kWireFormat);
}

TEST_F(ExoticLocaleTest, WireFormatRejectsAnythingButTheWholePattern) {
  const auto formatter = DateFormatter::fixed(kWireFormat);
  for (const char* text : {"2017-03-01", "2017-03-01T10:20:30", "2017-03-01T10:20:30Z trailing",
                           " 2017-03-01T10:20:30Z", "2017-02-30T10:20:30Z", "2017-03-01T25:00:00Z",
                           "", "not a date"}) {
    EXPECT_FALSE(formatter.parse(text).has_value()) << text;
  }
}

TEST_F(ExoticLocaleTest, TemplateFollowsTheCurrentLocale) {
  setDefaultLocale("en_US");
  const auto formatter = DateFormatter::fromTemplate("MMMd");
  EXPECT_EQ(formatter.pattern(), "MMM d");
  // The system zone applies: 23:00 UTC on March 1st is already March 2nd in Chatham.
  const auto instant = sys_days{std::chrono::year{2017} / 3 / 1} + 23h;
  EXPECT_EQ(formatter.format(instant), "Mar 2");
}

TEST(DateFormatterTest, BestPatternForTwoLocales) {
  const struct {
    const char* skeleton;
    const char* locale;
    const char* pattern;
  } cases[] = {
      {"MMMd", "en-US", "MMM d"},      {"MMMd", "de", "d. MMM"},  {"jmm", "de", "HH:mm"},
      {"jmm", "en-US", "h:mm\u202Fa"}, {"yMd", "en-US", "M/d/y"}, {"yMd", "de", "d.M.y"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DateFormatter::bestPattern(c.skeleton, c.locale), c.pattern)
        << c.skeleton << " " << c.locale;
  }
}

TEST(DurationFormatterTest, MinutesAndSecondsPositional) {
  const struct {
    seconds duration;
    const char* text;
  } cases[] = {
      {59min + 58s, "59:58"}, {5s, "0:05"}, {0s, "0:00"}, {125min + 7s, "125:07"}, {-65s, "-1:05"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DurationFormatter::formatMinutesSeconds(c.duration, "en-US"), c.text);
  }
}

}  // namespace
}  // namespace quorvel::platform
